// What several threads may do at once: read a sample table, a pattern and an unchanging string,
// and change objects of their own. ThreadSanitizer watches.

#include "fuzz/models/container_model.h"
#include "fuzz/models/pool_model.h"
#include "fuzz/models/search_path_model.h"

#include <vximage.h>
#include <vxpattern.h>
#include <vxsampling.h>
#include <vxstring.h>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// What all threads read.
VxSampleTable samples;
char pattern[VX_PATTERN_SIZE];
const VxString fox("the quick brown fox and the Lazy dog");

// The elements of a row that was written and read.
std::vector<std::uint16_t> throughImage(std::vector<std::uint16_t> row) {
    const int file = ::memfd_create("image", 0);
    VxImage *image = vxImageOpenFd(::dup(file), "w", VX_IMAGE_RUN_LENGTH | 2U, 1U, 50U);
    vxImagePutRow(image, row.data(), 0, 0);
    vxImageClose(image);
    ::lseek(file, 0, SEEK_SET);
    image = vxImageOpenFd(file, "r");
    row.assign(50, 0);
    vxImageGetRow(image, row.data(), 0, 0);
    vxImageClose(image);
    return row;
}

void useEverything(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    ListModel<VxOwningList<int>> list;
    TableModel<VxPointerTable<int>> table;
    PoolModel pool(16);
    SearchPathRun path("/a;/b", "/");
    for (int i = 0; i < 1000; ++i) {
        pool.change(below);
        EXPECT_TRUE(list.change(below) && table.change(below));
        EXPECT_TRUE(path.change(random(), random() % 8, "/d" + std::to_string(below(9))));
        const int n = below(40);
        VxString sharer(n);
        VxString string(sharer);
        string += VxString(" and ") + sharer;
        string.toUpper();
        EXPECT_EQ(vxStringView(string), std::to_string(n) + " AND " + std::to_string(n));
        const std::string name(random() % 99, 'x');
        const std::string wood = name + "wood" + std::to_string(n % 10) + ".sgi";
        EXPECT_EQ(vxMatchPattern(wood.c_str(), pattern), n % 10 < 5);
        EXPECT_EQ(fox.findC("lazy", n), n <= 28 ? 28 : -1);
        VxPixelSampler sampler{};
        sampler.table = &samples;
        sampler.setIndex = n;  // instead of one drawn from the process
        float x = 0, y = 0;
        vxPixelSamplerNext(&sampler, &x, &y);
        EXPECT_EQ(x, samples.offsetX[n][1]);
        const std::vector<std::uint16_t> row(50, static_cast<std::uint16_t>(random()));
        EXPECT_EQ(throughImage(row), row);
    }
    EXPECT_EQ(pool.difference(), "");
}

TEST(Threads, ReadWhatTheyShareAndChangeTheirOwn) {
    EXPECT_EQ(vxSampleTableInit(&samples, 3, 0.5F, 0, 1.0F, 1), 1);
    EXPECT_EQ(vxCompileWildcard("*wo?d[0-4]*.sgi", pattern), 1);
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed)
        threads.emplace_back(useEverything, seed);
    for (std::thread &thread : threads)
        thread.join();
    vxSampleTableRelease(&samples);
}

}  // namespace
