// The double-byte pages and which bytes their characters are made of; the classes of single bytes.

#ifndef VX_PLATFORM_CODE_PAGE_TABLES_H
#define VX_PLATFORM_CODE_PAGE_TABLES_H

#include "platform/code_page.h"

namespace vx {

inline constexpr CodePage::Range kLeads932[] = {{0x81, 0x9F}, {0xE0, 0xFC}};
inline constexpr CodePage::Range kTrails932[] = {{0x40, 0x7E}, {0x80, 0xFC}};
inline constexpr CodePage::Range kLeadsOfOthers[] = {{0x81, 0xFE}};
inline constexpr CodePage::Range kTrails936[] = {{0x40, 0x7E}, {0x80, 0xFE}};
inline constexpr CodePage::Range kTrails949[] = {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}};
inline constexpr CodePage::Range kTrails950[] = {{0x40, 0x7E}, {0xA1, 0xFE}};

inline constexpr CodePage kSingleByte;
inline constexpr CodePage kPage932{932, kLeads932, kTrails932};
inline constexpr CodePage kPage936{936, kLeadsOfOthers, kTrails936};
inline constexpr CodePage kPage949{949, kLeadsOfOthers, kTrails949};
inline constexpr CodePage kPage950{950, kLeadsOfOthers, kTrails950};

inline bool isByte(unsigned code) {
    return code <= 255;
}

// The class of a byte in the LC_CTYPE locale. Half a character has none.
inline bool isByteOf(unsigned code, int (*isOfClass)(int)) {
    return !currentCodePage().isLead(static_cast<char>(code)) &&
           isOfClass(static_cast<int>(code)) != 0;
}

}  // namespace vx

#endif
