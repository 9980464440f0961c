// Strings that share bodies: random changes, searches and comparisons, compared with std::string.

#include "fuzz/fuzz.h"
#include "fuzz/models/string_model.h"

#include <fuzzer/FuzzedDataProvider.h>

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
        CHECK(searchDifference(in, text, byte, from).empty());
        // The library finds long patterns and compares long texts in another way than short ones.
        CHECK(searchDifference(repeated(in, 400) + repeated(text, 700) + in,
                               repeated(text, 300) + in, byte, from)
                  .empty());
        CHECK(comparisonDifference(in, text).empty());
        CHECK(comparisonDifference(repeated(in, 600) + text, repeated(in, 600) + in).empty());
        CHECK(numberDifference(text, below(static_cast<int>(text.size()) + 1)).empty());
    }
    return 0;
}
