// Strings that share bodies: random changes, searches and comparisons, compared with std::string.

#include "fuzz/fuzz.h"
#include "fuzz/models/string_model.h"

#include <cmath>
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
    int end = -1;
    const VxString s = made(text);
    const long value = std::strtol(text.c_str(), nullptr, 10);
    const long nearest = std::clamp<long>(value, -2147483647L - 1, 2147483647L);
    CHECK(s.getInt(0, end) == nearest && end >= 0 && end <= s.length());
    char *stop = nullptr;
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
        // Long patterns take another way.
        search(repeated(in, 400) + repeated(text, 700) + in, repeated(text, 300) + in, byte, from);
        compare(in, text);
        compare(repeated(in, 1200) + text, repeated(in, 1200) + in);
        readNumber(text);
    }
    return 0;
}
