// Binding by ordinal: a table of addresses made from the same list as the version script.

#include <vxexports.h>

#include <array>
#include <cstddef>

// Only the address of an export is wanted here, so each symbol, function or table, is
// declared as bytes under a name of its own and bound to the real one by the assembler.
extern "C" {
#define VX_EXPORT(ordinal, symbol) extern const char vxExport##ordinal[] __asm__(#symbol);
#include "exports.inc"
#undef VX_EXPORT
}

namespace {

constexpr int kFirst = 100;
constexpr int kLast = 495;

struct Export {
    int ordinal;
    const void *address;
};

constexpr Export kExports[] = {
#define VX_EXPORT(ordinal, symbol) {ordinal, vxExport##ordinal},
#include "exports.inc"
#undef VX_EXPORT
};

constexpr auto kAddresses = [] {
    std::array<const void *, kLast - kFirst + 1> addresses{};
    for (const Export &entry : kExports)
        addresses[static_cast<std::size_t>(entry.ordinal - kFirst)] = entry.address;
    return addresses;
}();

}  // namespace

const void *vxExportAddress(int ordinal) {
    if (ordinal < kFirst || ordinal > kLast) return nullptr;
    return kAddresses[static_cast<std::size_t>(ordinal - kFirst)];
}
