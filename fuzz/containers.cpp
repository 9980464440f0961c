// Lists and tables of every kind, changed at random and compared with their models.

#include "fuzz/fuzz.h"
#include "fuzz/models/container_model.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace {

template <typename List>
void runList(auto &input, auto below) {
    ListModel<List> run;
    while (input.remaining_bytes() > 0)
        CHECK(run.change(below) && run.complete);
}

template <typename Table>
void runTable(auto &input, auto below) {
    TableModel<Table> run(below(100));
    while (input.remaining_bytes() > 0) {
        CHECK(run.change(below) && run.complete);
        if (below(16) == 0) CHECK(run.agrees());
    }
    CHECK(run.agrees());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto below = [&](int n) { return input.ConsumeIntegralInRange(0, n - 1); };
    switch (below(6)) {
        case 0:
            runList<VxOwningList<int>>(input, below);
            break;
        case 1:
            runList<VxPointerList<int>>(input, below);
            break;
        case 2:
            runList<VxPointerList<const int>>(input, below);
            break;
        case 3:
            runTable<VxOwningTable<int>>(input, below);
            break;
        case 4:
            runTable<VxPointerTable<int>>(input, below);
            break;
        default:
            runTable<VxPointerTable<const int>>(input, below);
    }
    return 0;
}
