// Callers that bind by number get the function of that number.

#include <vxpool.h>
#include <vxsampling.h>

#include <gtest/gtest.h>
#include <utility>

namespace {

template <typename Function>
const void *address(Function *function) {
    return reinterpret_cast<const void *>(function);
}

TEST(Ordinals, OfPoolsAndSampling) {
    const std::pair<int, const void *> exports[] = {
        {143, address(vxPoolAlloc)},          {144, address(vxPoolSetBlockCount)},
        {145, address(vxPoolAllocBlock)},     {146, address(vxPoolDestroy)},
        {147, address(vxPoolFree)},           {148, address(vxPoolRecycle)},
        {149, address(vxPoolInit)},           {150, address(vxPoolReset)},
        {152, address(vxPoolSize)},           {200, address(vxPixelSamplerAdd)},
        {201, address(vxPixelSamplerResult)}, {202, address(vxPixelSamplerNeedsMore)},
        {203, address(vxPixelSamplerNext)},   {204, address(vxPixelSamplerStart)},
        {205, address(vxSampleTableInit)},    {206, address(vxPixelSamplerHasNext)},
        {207, address(vxSampleTableWeight)}};
    for (const auto &[ordinal, function] : exports)
        EXPECT_EQ(vxExportAddress(ordinal), function) << ordinal;
}

}  // namespace
