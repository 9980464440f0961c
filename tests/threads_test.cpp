// What several threads may do at once: reading a sample table, a pattern and an unchanging string,
// and working on objects of their own. ThreadSanitizer watches.

#include <vximage.h>
#include <vxpattern.h>
#include <vxpool.h>
#include <vxsampling.h>
#include <vxsearchpath.h>
#include <vxstring.h>
#include <vxtyped.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// What all threads read.
VxSampleTable table;
char pattern[VX_PATTERN_SIZE];
const VxString text("the quick brown fox and the Lazy dog");

int imageElement(std::uint16_t value) {
    const int file = ::memfd_create("image", 0);
    VxImage *image = vxImageOpenFd(::dup(file), "w", VX_IMAGE_RUN_LENGTH | 2U, 2U, 50U, 3U);
    std::vector<std::uint16_t> row(50, value);
    for (int y = 0; y < 3; ++y)
        vxImagePutRow(image, row.data(), y, 0);
    vxImageClose(image);
    ::lseek(file, 0, SEEK_SET);
    image = vxImageOpenFd(file, "r");
    vxImageGetRow(image, row.data(), 2, 0);
    vxImageClose(image);
    return row[49];
}

// Uses everything once. The answer depends on the number alone.
std::string answer(int number) {
    const std::string name = std::to_string(number);
    VxPixelSampler sampler{};
    sampler.table = &table;
    sampler.setIndex = number % VX_SAMPLE_SETS;  // instead of one drawn from the process
    float place[3] = {};
    vxPixelSamplerNext(&sampler, &place[0], &place[1]);
    vxPixelSamplerAdd(&sampler, place, place, 1, 0);

    VxString string(number);
    VxString sharer(string);
    string += VxString(" and ") + sharer;

    VxOwningList<std::string> list;
    VxOwningTable<std::string> names(7);
    VxPool pool;
    vxPoolInit(&pool, 16, 8);
    for (int i = 0; i < 30; ++i) {
        list.insert(i / 2, std::to_string(number * i));
        names.insert(list[0]);
        *static_cast<int *>(vxPoolAlloc(&pool)) = number;
    }
    vxPoolDestroy(&pool);

    VxSearchPath *path = vxSearchPathCreate(("/d" + name + ";/tmp/../a").c_str());
    vxSearchPathInsert(path, 1, "/in");
    char *directories = vxSearchPathToString(path);
    const std::string all = directories + list[7] + std::string(vxStringView(string));
    std::free(directories);
    vxSearchPathFree(path);
    return all + ' ' + std::to_string(vxMatchPattern(("wood" + name).c_str(), pattern)) +
           std::to_string(sampler.colorSum[1]) + std::to_string(text.findC("lazy", number % 40)) +
           std::to_string(imageElement(static_cast<std::uint16_t>(number)));
}

TEST(Threads, EachGetsWhatItGetsAlone) {
    EXPECT_EQ(vxSampleTableInit(&table, 3, 0.5F, 0, 1.0F, 1), 1);
    EXPECT_EQ(vxCompileWildcard("*wo?d[0-4]*", pattern), 1);
    std::vector<std::string> alone;
    for (int number = 0; number < 100; ++number)
        alone.push_back(answer(number));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 100; ++i) {
                const int number = (i + t * 25) % 100;
                EXPECT_EQ(answer(number), alone[static_cast<std::size_t>(number)]);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    vxSampleTableRelease(&table);
}

}  // namespace
