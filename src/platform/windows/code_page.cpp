// The page is that of _setmbcp, which by default is the system's.

#include "platform/code_page.h"

#include "platform/code_page_tables.h"

#include <cctype>
#include <mbctype.h>
#include <mbstring.h>

namespace vx {

const CodePage &currentCodePage() {
    switch (::_getmbcp()) {
        case 932:
            return kPage932;
        case 936:
            return kPage936;
        case 949:
            return kPage949;
        case 950:
            return kPage950;
        default:
            return kSingleByte;
    }
}

bool isLetter(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isalpha) : ::_ismbcalpha(code) != 0;
}

bool isDigit(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isdigit) : ::_ismbcdigit(code) != 0;
}

}  // namespace vx
