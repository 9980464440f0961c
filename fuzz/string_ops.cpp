// Strings that share bodies: random changes, searches and comparisons, compared with std::string.

#include "fuzz/fuzz.h"
#include "fuzz/models/string_model.h"

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

int signedByte(char byte) {
    return static_cast<signed char>(byte);
}

// The difference of the first two bytes that differ, including the NUL after each text.
int order(const std::string &one, const std::string &other) {
    for (std::size_t i = 0;; ++i) {
        const int left = signedByte(one.c_str()[i]);
        const int right = signedByte(other.c_str()[i]);
        if (left != right || i == one.size() || i == other.size()) return left - right;
    }
}

void compare(const std::string &one, const std::string &other) {
    const VxString s = made(one);
    const VxString t = made(other);
    const int sign = order(one, other);
    CHECK(s.compare(t) == sign);
    CHECK(s.compareC(t) == order(mapped(one, vx::lowered), mapped(other, vx::lowered)));
    CHECK((s == t) == (one == other) && (s < t) == (sign < 0) && (s >= t) == (sign >= 0));
    CHECK((s <=> t) == (sign != 0 ? sign <=> 0 : one.size() <=> other.size()));
    const char *literal = other.c_str();
    CHECK((s == literal) == (one == literal));
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
        compare(text, in);
        readNumber(text);
    }
    return 0;
}
