// Binding by ordinal: a table of addresses made from the same list as the version script.

#include <vxexports.h>

#include <algorithm>
#include <iterator>

// Only the address of an export is wanted here, so each symbol, function or table, is
// declared as bytes under a name of its own and bound to the real one by the assembler.
extern "C" {
#define VX_EXPORT(ordinal, symbol) extern const char vxExport##ordinal[] __asm__(#symbol);
#include "exports.inc"
#undef VX_EXPORT
}

namespace {

struct Export {
    int ordinal;
    const void *address;
};

// In the order of the ordinals, as the list is.
constexpr Export kTable[] = {
#define VX_EXPORT(ordinal, symbol) {ordinal, vxExport##ordinal},
#include "exports.inc"
#undef VX_EXPORT
};

}  // namespace

const void *vxExportAddress(int ordinal) {
    const auto *const found =
        std::lower_bound(std::begin(kTable), std::end(kTable), ordinal,
                         [](const Export &entry, int wanted) { return entry.ordinal < wanted; });
    return found != std::end(kTable) && found->ordinal == ordinal ? found->address : nullptr;
}
