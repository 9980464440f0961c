// Parts of file names, lines and white space, against a plain model. Input: texts: a name, an
// extension, and lines.

#include "fuzz/fuzz.h"
#include "fuzz/models/text_model.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Texts input(data, size, 3);
    CHECK(text_model::fileNameDifference(input[0], input[1]).empty());
    for (const std::string &text : {input[0], input[2]}) {
        CHECK(text_model::trimDifference(text).empty());
        CHECK(text_model::hasConsistentClasses(text));
    }
    const std::size_t bufferSize = 2 + (input.choices >> 1 & 31);
    const bool trims = (input.choices & 64) != 0;
    std::string lines = input[2];
    if (lines.empty()) return 0;
    FILE *stream = ::fmemopen(lines.data(), lines.size(), "r");
    CHECK(text_model::lineDifference(lines, stream, bufferSize, trims).empty());
    return 0;
}
