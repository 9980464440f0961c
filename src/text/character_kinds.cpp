// Characters taken from a text with their length.

#include "platform/character_class.h"
#include "platform/codepage.h"

#include <vxtext.h>

#include <cctype>

namespace {

int lengthIf(const char *character, int (*isOfByteKind)(int), int (*isOfDoubleKind)(unsigned)) {
    const auto first = static_cast<unsigned char>(character[0]);
    switch (platform::mblen(character, platform::__mb_cur_max)) {
        case 1:
            return isOfByteKind(first) != 0 ? 1 : 0;
        case 2:
            return isOfDoubleKind(first * 256U + static_cast<unsigned char>(character[1])) != 0 ? 2
                                                                                                : 0;
        default:
            return 0;
    }
}

}  // namespace

int vxCharIsDigit(const char *character) {
    return lengthIf(character, std::isdigit, platform::_ismbcdigit);
}

int vxCharIsAlpha(const char *character) {
    return lengthIf(character, std::isalpha, platform::_ismbcalpha);
}

int vxCharIsAlnum(const char *character) {
    return lengthIf(character, std::isalnum, platform::_ismbcalnum);
}
