// The members that the header defines inline, written out for the export table.

#define VX_EMIT_INLINE
#include <vxstring.h>
