// The members that the headers define inline, written out for the export table.

#define VX_EMIT_INLINE
#include <vxarraylist.h>
#include <vxhashtable.h>
