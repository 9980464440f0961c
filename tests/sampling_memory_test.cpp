// A sample table without memory. Linked with --wrap for calloc and free.

#include <vxsampling.h>

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace {

int callsUntilFailure = -1;
bool failingOnward;
int calls;
bool recording;
std::vector<void *> made;
std::vector<void *> freed;

}  // namespace

extern "C" {
void *__real_calloc(std::size_t count, std::size_t size);
void __real_free(void *memory);

void *__wrap_calloc(std::size_t count, std::size_t size) {
    if (!recording) return __real_calloc(count, size);
    const int call = calls++;
    const bool fails = call == callsUntilFailure || (failingOnward && call > callsUntilFailure);
    void *memory = fails ? nullptr : __real_calloc(count, size);
    if (memory != nullptr) made.push_back(memory);
    return memory;
}

void __wrap_free(void *memory) {
    if (recording && memory != nullptr) freed.push_back(memory);
    __real_free(memory);
}
}

namespace {

int initRecorded(VxSampleTable *table, int gridSize, int failing, bool onward = false) {
    failingOnward = onward;
    calls = 0;
    callsUntilFailure = failing;
    made.clear();
    freed.clear();
    recording = true;
    const int result = vxSampleTableInit(table, gridSize, 1.0F, 0, 1.0F, 0);
    recording = false;
    return result;
}

TEST(SampleTableMemory, EachOfTheAllocationsMayFail) {
    float sentinel = 0;
    for (int trial = 0; trial < 4 * VX_SAMPLE_SETS; ++trial) {
        SCOPED_TRACE(trial);
        const int failing = trial / 2;
        VxSampleTable table{};
        for (int set = 0; set < VX_SAMPLE_SETS; ++set)
            table.offsetX[set] = table.offsetY[set] = &sentinel;
        EXPECT_EQ(initRecorded(&table, 2, failing, trial % 2 != 0), 0);
        const int last = failing / 2;
        EXPECT_EQ(calls, 2 * (last + 1));
        EXPECT_EQ(freed, made);
        for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
            float *const expected = set <= last ? nullptr : &sentinel;
            EXPECT_EQ(table.offsetX[set], expected) << set;
            EXPECT_EQ(table.offsetY[set], expected) << set;
        }
        EXPECT_EQ(table.sampleCount, 4);
        EXPECT_EQ(table.sampleWeight, 0.25F);
    }
}

TEST(SampleTableMemory, AFilledTableHas134ArraysAndTheHelperReleasesThem) {
    VxSampleTable table{};
    ASSERT_EQ(initRecorded(&table, 3, -1), 1);
    EXPECT_EQ(made.size(), 134U);
    EXPECT_TRUE(freed.empty());
    recording = true;
    vxSampleTableRelease(&table);
    vxSampleTableRelease(&table);
    recording = false;
    EXPECT_EQ(freed, made);
}

TEST(SampleTableMemory, AGridBeyondTheCountIsRefused) {
    VxSampleTable table{};
    EXPECT_EQ(initRecorded(&table, 46340, 0, true), 0);
    EXPECT_EQ(table.sampleCount, 46340 * 46340);
    for (const int grid : {46341, INT32_MAX}) {
        EXPECT_EQ(initRecorded(&table, grid, -1), 0);
        EXPECT_EQ(table.sampleCount, 0);
        EXPECT_EQ(calls, 0);
    }
}

}  // namespace
