// Classes of characters, with the length of the character as the answer.

#include "platform/code_page.h"

#include <vxtext.h>

#include <cctype>

namespace {

int lengthIf(const char *character, int (*isOfByteKind)(int), bool (*isOfDoubleKind)(unsigned)) {
    const auto first = static_cast<unsigned char>(character[0]);
    switch (vx::characterLength(character, vx::kMaxCharacterBytes)) {
        case 1:
            return isOfByteKind(first) != 0 ? 1 : 0;
        case 2:
            return isOfDoubleKind(first * 256U + static_cast<unsigned char>(character[1])) ? 2 : 0;
        default:
            return 0;
    }
}

}  // namespace

int vxCharIsDigit(const char *character) {
    return lengthIf(character, std::isdigit, vx::isDigit);
}

int vxCharIsAlpha(const char *character) {
    return lengthIf(character, std::isalpha, vx::isLetter);
}

int vxCharIsAlnum(const char *character) {
    return lengthIf(character, std::isalnum, vx::isLetterOrDigit);
}
