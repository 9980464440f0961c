// Search paths: finding a file, beside the bare calls of the system that it needs.

#include "scratch_folder.h"

#include <vxsearchpath.h>

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// ---- Finding a file that only the last directory holds

std::vector<std::string> directories(const Folder &folder, int count) {
    std::vector<std::string> all;
    for (int i = 0; i < count; ++i) {
        all.push_back(folder.at("textures" + std::to_string(i)));
        fs::create_directories(all.back());
    }
    std::ofstream(all.back() + "/wood.sgi") << "x";
    return all;
}

void find(benchmark::State &state) {
    const Folder folder;
    std::string text;
    for (const std::string &directory : directories(folder, static_cast<int>(state.range(0)))) {
        text += directory + ";";
    }
    VxSearchPath *list = vxSearchPathCreate(text.c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(vxSearchPathFind(list, "wood.sgi", 0));
    vxSearchPathFree(list);
}

void bareStat(benchmark::State &state) {
    const Folder folder;
    std::vector<std::string> paths = directories(folder, static_cast<int>(state.range(0)));
    for (std::string &path : paths)
        path += "/wood.sgi";
    for (auto _ : state) {
        for (const std::string &path : paths) {
            struct stat status;
            benchmark::DoNotOptimize(::stat(path.c_str(), &status));
        }
    }
}

BENCHMARK(find)->Name("find/vxutil")->Arg(10)->Arg(100);
BENCHMARK(bareStat)->Name("find/stat")->Arg(10)->Arg(100);

}  // namespace
