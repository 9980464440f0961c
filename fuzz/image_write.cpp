// Runs of calls that write an image: each gives what the model says, and the file is that of the
// model and reads as such. Input: type and sizes, and choices.

#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"
#include "fuzz/models/image_run.h"

#include <fuzzer/FuzzedDataProvider.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const MemoryFile file;
    collectReports();
    file.set(data, 0);
    FuzzedDataProvider input(data, size);
    const auto below = [&](int n) { return input.ConsumeIntegralInRange(0, n - 1); };
    const auto side = [&](int n) { return static_cast<unsigned>(below(n)); };
    const unsigned format = (side(2) * 0x100 + side(2) + 1) | side(2) * kBigEndian;
    ImageRun run(file.path, format, side(300), 1 + side(6), 1 + side(6), below(8) == 0);
    const int way = below(3);
    while (input.remaining_bytes() > 0)
        run.change(below);
    const std::string expected = run.close(way);
    const std::string found = run.difference() + differences(file.path, ImageModel(expected));
    if (!found.empty()) std::fputs(found.c_str(), stderr);
    CHECK(found.empty() && file.contents() == expected);
    return 0;
}
