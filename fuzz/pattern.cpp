// Patterns: compiled from a wildcard or from source text, or a form as it comes, and matched
// against the definition. Input: texts, the first one the pattern and the last one the subject.

#include "fuzz/fuzz.h"
#include "pattern/pattern_compiler.h"
#include "tests/pattern_model.h"

#include <algorithm>
#include <cstring>

namespace {

// The index of the terminator of a form; -1 when a list or the form goes on behind the limit.
int endOf(const char *form) {
    const std::string padded = std::string(form, VX_PATTERN_SIZE) + "..";
    const char *const begin = padded.c_str();
    for (const char *at = begin; at - begin <= vx::kMaxProgramBytes;) {
        if (*at == '\0') return static_cast<int>(at - begin);
        const char *next = PatternDefinition::behind(at);
        at = next != at ? next : at + 1;  // no opcode
    }
    return -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Texts input(data, size, 2);
    const unsigned kind = input.choices >> 1 & 3;
    const Exactly form(std::string(VX_PATTERN_SIZE - 1, '#'));
    const Exactly subject(input.texts.back());
    // A lead byte alone takes an opcode for its second half, and what follows for elements.
    const bool whole = kind != 3 && MB_CUR_MAX == 1;
    if (kind < 2) {
        const Exactly wildcard(input[0]);
        if (vxCompileWildcard(wildcard, form) == 0) return 0;
        const int end = endOf(form);
        CHECK(!whole || end >= 0);
        CHECK(!whole || std::all_of(form + end, form + VX_PATTERN_SIZE,
                                    [](char byte) { return byte == '\0'; }));
    } else if (kind == 2) {
        const Exactly source(input[0]);
        const int end = vx::compilePattern(source, 0, 0, form);
        if (end < 0) return 0;
        CHECK(static_cast<std::size_t>(end) == input[0].size());
    } else {
        // All but the subject, NULs between texts included.
        const std::size_t behind = std::min<std::size_t>(size, input.texts.back().size() + 2);
        std::memset(form, 0, VX_PATTERN_SIZE);
        std::copy_n(data + 1, std::min<std::size_t>(size - behind, VX_PATTERN_SIZE),
                    static_cast<char *>(form));
    }
    const int matched = vxMatchPattern(subject, form);
    CHECK(matched == 0 || matched == 1);
    const std::size_t length = input.texts.back().size();
    // What the definition is about to do.
    const auto stars = static_cast<std::size_t>(std::count(form + 0, form + VX_PATTERN_SIZE, '*'));
    const std::size_t steps = length * length * stars;
    if (endOf(form) < 0) {
        CHECK(!whole);
    } else if (length > 510) {
        CHECK(matched == 0);
    } else if (steps < 1000000) {
        CHECK((matched == 1) == PatternDefinition(input.texts.back(), form).matches());
    }
    return 0;
}
