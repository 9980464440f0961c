// Patterns: compiled from a wildcard or from source text, or arbitrary bytes as a program, and
// matched against the definition. Input: texts, first the pattern and last the subject.

#include "fuzz/fuzz.h"
#include "fuzz/models/pattern_model.h"
#include "pattern/pattern_compiler.h"

#include <algorithm>
#include <cstring>

namespace {

// The index of the terminator of a program; -1 if a list or the program exceeds the limit.
int endOf(const char *program) {
    const std::string padded = std::string(program, VX_PATTERN_SIZE) + "..";
    const char *const begin = padded.c_str();
    for (const char *at = begin; at - begin <= vx::kMaxProgramBytes;) {
        if (*at == '\0') return static_cast<int>(at - begin);
        const char *next = PatternDefinition::next(at);
        at = next != at ? next : at + 1;  // not an opcode
    }
    return -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Texts input(data, size, 2);
    const unsigned kind = input.choices >> 1 & 3;
    const Exactly program(std::string(VX_PATTERN_SIZE - 1, '#'));
    const Exactly subject(input.texts.back());
    // After a lone lead byte, operands are read as elements.
    const bool valid = kind != 3 && MB_CUR_MAX == 1;
    if (kind < 2) {
        const Exactly wildcard(input[0]);
        if (vxCompileWildcard(wildcard, program) == 0) return 0;
        const int end = endOf(program);
        CHECK(!valid || end >= 0);
        CHECK(!valid || std::all_of(program + end, program + VX_PATTERN_SIZE,
                                    [](char byte) { return byte == '\0'; }));
    } else if (kind == 2) {
        const Exactly source(input[0]);
        const int end = vx::compilePattern(source, 0, 0, program);
        if (end < 0) return 0;
        CHECK(static_cast<std::size_t>(end) == input[0].size());
    } else {
        // Everything before the subject, with the NULs between texts.
        const std::size_t subjectBytes = std::min<std::size_t>(size, input.texts.back().size() + 2);
        std::memset(program, 0, VX_PATTERN_SIZE);
        std::copy_n(data + 1, std::min<std::size_t>(size - subjectBytes, VX_PATTERN_SIZE),
                    static_cast<char *>(program));
    }
    const int matched = vxMatchPattern(subject, program);
    CHECK(matched == 0 || matched == 1);
    const std::size_t length = input.texts.back().size();
    // The steps that the definition needs.
    const auto stars =
        static_cast<std::size_t>(std::count(program + 0, program + VX_PATTERN_SIZE, '*'));
    const std::size_t steps = length * length * stars;
    if (endOf(program) < 0) {
        CHECK(!valid);
    } else if (length > 510) {
        CHECK(matched == 0);
    } else if (steps < 1000000) {
        CHECK((matched == 1) == PatternDefinition(input.texts.back(), program).matches());
    }
    return 0;
}
