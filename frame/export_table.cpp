// Binding by ordinal: a table of addresses made from the same list as the version script.

#include <vxexports.h>

// Only the address of an export is wanted here, so each symbol, function or table, is
// declared as bytes under a name of its own and bound to the real one by the assembler.
extern "C" {
#define VX_EXPORT(ordinal, symbol) extern const char vxExport##ordinal[] __asm__(#symbol);
#include "exports.inc"
#undef VX_EXPORT
}

const void *vxExportAddress(int ordinal) {
    switch (ordinal) {
#define VX_EXPORT(number, symbol) \
    case number:                  \
        return vxExport##number;
#include "exports.inc"
#undef VX_EXPORT
        default:
            return nullptr;
    }
}
