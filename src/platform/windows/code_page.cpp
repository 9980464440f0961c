// The page is that of _setmbcp, which by default is the system's.

#include "platform/code_page.h"
#include "platform/code_page_tables.h"

#include <mbctype.h>
#include <mbstring.h>

namespace vx {

namespace {

// Half a character would count as the byte that it is in a single-byte page.
bool isLeadAlone(unsigned code) {
    return code <= 255 && currentCodePage().isLead(static_cast<char>(code));
}

}  // namespace

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
    return !isLeadAlone(code) && ::_ismbcalpha(code) != 0;
}

bool isDigit(unsigned code) {
    return !isLeadAlone(code) && ::_ismbcdigit(code) != 0;
}

}  // namespace vx
