// What several threads may do at once: read a sample table, a pattern and an unchanging string,
// and change objects of their own. ThreadSanitizer watches.

#include "fuzz/models/container_model.h"
#include "fuzz/models/pool_model.h"
#include "fuzz/models/search_path_model.h"
#include "scratch_folder.h"

#include <vxhandles.h>
#include <vxpattern.h>
#include <vxstring.h>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

// What all threads read.
const VxUniqueSampleTable samples = vxSampleTableMake(3, 0.5F, 0, 1.0F, 1);
char pattern[VX_PATTERN_SIZE];
const VxString fox("the quick brown fox and the Lazy dog");
const VxOwningList<std::string> emptyList;
const VxOwningTable<std::string> emptyTable(3);

void useEverything(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    ListModel<VxOwningList<int>> list;
    TableModel<VxPointerTable<int>> table;
    PoolModel pool(16);
    const ScratchFolder folder;
    const std::string file = folder.at("picture.sgi");
    SearchPathRun path("/a;/b", "/");
    for (int i = 0; i < 1000; ++i) {
        pool.change(below);
        EXPECT_TRUE(list.change(below) && table.change(below));
        EXPECT_TRUE(path.change(random(), random() % 8, "/d" + std::to_string(below(9))));
        EXPECT_EQ(VxOwningList<std::string>(emptyList).length(), 0);
        EXPECT_EQ(VxOwningTable<std::string>(emptyTable).getNumBuckets(), 3);
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
        sampler.table = samples.get();
        sampler.setIndex = n;  // instead of one drawn from the process
        float x = 0, y = 0;
        vxPixelSamplerNext(&sampler, &x, &y);
        EXPECT_EQ(x, samples->offsetX[n][1]);
        const VxPicture picture{3, 1, 1, 2, {static_cast<std::uint16_t>(random()), 1, 1}};
        EXPECT_TRUE(vxPictureWrite(file.c_str(), picture));
        EXPECT_EQ(vxPictureRead(file.c_str()), picture);
    }
    EXPECT_EQ(pool.difference(), "");
}

TEST(Threads, ReadWhatTheyShareAndChangeTheirOwn) {
    EXPECT_EQ(vxCompileWildcard("*wo?d[0-4]*.sgi", pattern), 1);
    std::vector<std::jthread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed)
        threads.emplace_back(useEverything, seed);
}

}  // namespace
