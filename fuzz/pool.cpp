// Runs of operations on a pool, against a plain model. Input: the size of an element, and choices.

#include "fuzz/fuzz.h"
#include "fuzz/models/pool_model.h"

#include <fuzzer/FuzzedDataProvider.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto below = [&](int n) { return input.ConsumeIntegralInRange(0, n - 1); };
    PoolModel run(1 + below(64));
    while (input.remaining_bytes() > 0) {
        run.change(below);
        CHECK(run.difference().empty());
    }
    return 0;
}
