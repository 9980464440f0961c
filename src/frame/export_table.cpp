// Binding by ordinal: a table of addresses, generated from the same list as the version script.

#include <vxexports.h>

#include <iterator>

// Only the addresses are needed, so each export, function or table, is declared as bytes under its
// own name. The assembler binds that name to the real symbol.
extern "C" {
#define VX_EXPORT(ordinal, symbol) extern const char vxExport##ordinal[] __asm__(#symbol);
#include "exports.inc"
#undef VX_EXPORT
}

namespace {

constexpr int kFirst = 100;
constexpr int kLast = 495;

constexpr const void *kAddresses[] = {
#define VX_EXPORT(ordinal, symbol) vxExport##ordinal,
#include "exports.inc"
#undef VX_EXPORT
};
static_assert(std::size(kAddresses) == kLast - kFirst + 1);  // 396

}  // namespace

const void *vxExportAddress(int ordinal) {
    return ordinal >= kFirst && ordinal <= kLast ? kAddresses[ordinal - kFirst] : nullptr;
}
