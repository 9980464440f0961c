// Strings that share bodies: random changes, searches and comparisons, compared with std::string.

#include "fuzz/fuzz.h"
#include "fuzz/models/string_model.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

void compare(const std::string &one, const std::string &other) {
    for (const auto &[found, expected] : comparisons(one, other))
        CHECK(found == expected);
}

void search(const std::string &in, const std::string &what, char byte, std::size_t from) {
    for (const auto &[found, expected] : searches(in, what, byte, from))
        CHECK(found == expected);
}

void readNumber(const std::string &text) {
    const VxString s = made(text);
    int end = -1;
    char *stop = nullptr;
    const long value = std::strtol(text.c_str(), &stop, 10);
    CHECK(s.getInt(0, end) == std::clamp<long>(value, INT_MIN, INT_MAX));
    CHECK(end == stop - text.c_str());
    const double real = std::strtod(text.c_str(), &stop);
    const double got = s.getDouble(0, end);
    CHECK(got == real || (std::isnan(got) && std::isnan(real)));
    CHECK(end == stop - text.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto below = [&](int n) { return input.ConsumeIntegralInRange(0, n - 1); };
    StringModel run;
    while (input.remaining_bytes() > 0) {
        if (below(4) != 0) {
            run.change(below);
            CHECK(run.difference().empty());
            continue;
        }
        const std::string text = input.ConsumeRandomLengthString(40);
        const std::string &in = run.model(below(6));
        const auto byte = static_cast<char>(below(256));
        const auto from = static_cast<std::size_t>(below(static_cast<int>(in.size()) + 3));
        search(in, text, byte, from);
        // The library finds long patterns and compares long texts in another way than short ones.
        search(repeated(in, 400) + repeated(text, 700) + in, repeated(text, 300) + in, byte, from);
        compare(in, text);
        compare(repeated(in, 600) + text, repeated(in, 600) + in);
        readNumber(text);
    }
    return 0;
}
