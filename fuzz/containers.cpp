// Lists and tables of every kind, changed at random and compared with their models.

#include "fuzz/fuzz.h"
#include "fuzz/models/container_model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>

namespace {

template <typename Model>
void run(FuzzedDataProvider &input) {
    Model model;
    while (input.remaining_bytes() > 0) {
        const auto below = [&input](int n) { return input.ConsumeIntegralInRange(0, n - 1); };
        CHECK(model.change(below) && model.complete);
    }
}

constexpr void (*kRuns[])(FuzzedDataProvider &) = {run<ListModel<BoxedList>>,
                                                   run<ListModel<VxPointerList<int>>>,
                                                   run<ListModel<VxPointerList<const int>>>,
                                                   run<TableModel<BoxedTable>>,
                                                   run<TableModel<VxOwningTable<int>>>,
                                                   run<TableModel<VxPointerTable<int>>>,
                                                   run<TableModel<VxPointerTable<const int>>>};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    kRuns[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kRuns) - 1)](input);
    return 0;
}
