// What may be done on several threads at once: reading a filled sample table, a compiled pattern
// and an unchanging string, and working on objects of one's own. Each job gives on every thread
// what it gives alone; ThreadSanitizer watches.

#include <vximage.h>
#include <vxpattern.h>
#include <vxpool.h>
#include <vxsampling.h>
#include <vxsearchpath.h>
#include <vxstring.h>
#include <vxtyped.h>

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kTurns = 40;

// What all threads read.
struct Shared {
    Shared() {
        EXPECT_EQ(vxSampleTableInit(&table, 3, 0.5F, 0, 1.0F, 1), 1);
        EXPECT_EQ(vxCompileWildcard("*wo?d[0-9]*.sgi", pattern), 1);
    }
    ~Shared() { vxSampleTableRelease(&table); }
    Shared(const Shared &) = delete;
    Shared &operator=(const Shared &) = delete;

    VxSampleTable table;
    char pattern[VX_PATTERN_SIZE];
    VxString text = "the quick brown fox and the Lazy dog";
};

// A job's answer depends on its number alone.
using Job = std::string (*)(const Shared &shared, int number);

std::string sampleTable(const Shared &shared, int number) {
    VxPixelSampler sampler;
    vxPixelSamplerStart(&sampler, &shared.table);
    sampler.setIndex = number % VX_SAMPLE_SETS;  // instead of the one drawn from the process
    float sum[3], second[3];
    while (vxPixelSamplerHasNext(&sampler) != 0) {
        float x, y;
        vxPixelSamplerNext(&sampler, &x, &y);
        const float place[] = {x, y, static_cast<float>(number)};
        vxPixelSamplerAdd(&sampler, place, place, 1, 0);
    }
    vxPixelSamplerResult(&sampler, sum, second);
    return std::to_string(sum[0]) + " " + std::to_string(second[1]) + " " + std::to_string(sum[2]);
}

std::string compiledPattern(const Shared &shared, int number) {
    const std::string wood = "oak_wood" + std::to_string(number) + ".sgi";
    const std::string stone = "stone" + std::to_string(number) + ".sgi";
    return std::to_string(vxMatchPattern(wood.c_str(), shared.pattern)) +
           std::to_string(vxMatchPattern(stone.c_str(), shared.pattern));
}

std::string unchangingString(const Shared &shared, int number) {
    return std::to_string(shared.text.findC("lazy", number % 20)) + " " +
           std::to_string(shared.text.hash()) + " " + std::to_string(shared.text.compareC("THE"));
}

std::string ownString(const Shared &, int number) {
    VxString text(number);
    VxString sharer(text);
    for (int i = 0; i < 20; ++i)
        text += VxString(" and ") + sharer;
    text.toUpper();
    text[0] = '*';
    return std::string(vxStringView(text));
}

std::string ownContainers(const Shared &, int number) {
    VxOwningList<std::string> list;
    VxOwningTable<std::string> table(7);
    VxPointerList<const std::string> pointers;
    for (int i = 0; i < 30; ++i) {
        EXPECT_TRUE(list.insert(i / 2, std::to_string(number * i)));
        table.insert(list[0]);
    }
    for (const std::string &text : table)
        EXPECT_TRUE(pointers.append(&text));
    const VxOwningList<std::string> copy(list);
    list.remove(0, 10);
    return copy[7] + list[7] + std::to_string(pointers.length());
}

std::string ownPool(const Shared &, int number) {
    VxPool pool;
    vxPoolInit(&pool, 16, 8);
    std::vector<int *> live;
    int sum = 0;
    for (int i = 0; i < 100; ++i) {
        live.push_back(static_cast<int *>(vxPoolAlloc(&pool)));
        *live.back() = number + i;
        if (i % 3 == 0) {
            sum += *live[live.size() / 2];
            vxPoolFree(&pool, live[live.size() / 2]);
            live.erase(live.begin() + static_cast<std::ptrdiff_t>(live.size() / 2));
        }
    }
    vxPoolDestroy(&pool);
    return std::to_string(sum);
}

std::string ownImage(const Shared &, int number) {
    char path[] = "/tmp/vxthreadsXXXXXX";
    const int file = ::mkstemp(path);
    VxImage *image = vxImageOpenFd(file, "w", VX_IMAGE_RUN_LENGTH | 2U, 2U, 50U, 3U);
    std::vector<std::uint16_t> row(50, static_cast<std::uint16_t>(number));
    for (int y = 0; y < 3; ++y) {
        row[static_cast<std::size_t>(y)] = static_cast<std::uint16_t>(y * number);
        vxImagePutRow(image, row.data(), y, 0);
    }
    vxImageClose(image);
    image = vxImageOpen(path, "r");
    std::string answer = std::to_string(vxImageGetRow(image, row.data(), 2, 0)) + " " +
                         std::to_string(row[2] + row[49]);
    vxImageClose(image);
    ::unlink(path);
    return answer;
}

std::string ownSearchPath(const Shared &, int number) {
    const std::string directory = "/d" + std::to_string(number);
    VxSearchPath *list = vxSearchPathCreate((directory + ";/tmp/../a;" + directory + "/b").c_str());
    vxSearchPathInsert(list, 1, "/in");
    char *text = vxSearchPathToString(list);
    std::string answer = text;
    std::free(text);
    vxSearchPathFree(list);
    return answer;
}

TEST(Threads, EachGetsWhatItGetsAlone) {
    const Shared shared;
    const std::array<Job, 8> jobs = {sampleTable, compiledPattern, unchangingString,
                                     ownString,   ownContainers,   ownPool,
                                     ownImage,    ownSearchPath};
    std::vector<std::string> alone;
    for (int number = 0; number < kThreads * kTurns; ++number)
        alone.push_back(jobs[static_cast<std::size_t>(number) % jobs.size()](shared, number));

    // Every thread does every job, in an order of its own.
    std::vector<std::vector<std::string>> answers(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            auto &mine = answers[static_cast<std::size_t>(t)];
            mine.resize(alone.size());
            for (int i = 0; i < kThreads * kTurns; ++i) {
                const int number = (i + t * (kTurns + 1)) % (kThreads * kTurns);
                const auto n = static_cast<std::size_t>(number);
                mine[n] = jobs[n % jobs.size()](shared, number);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const auto &mine : answers)
        EXPECT_EQ(mine, alone);
}

}  // namespace
