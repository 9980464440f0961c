// Loading and unloading the library, and keeping settings, compared with the bare calls that they
// need.

#include "scratch_folder.h"

#include <vxsearchpath.h>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// ---- Settings, and a life of the library

constexpr char kUser[] = "HKEY_CURRENT_USER";
constexpr char kMachine[] = "HKEY_LOCAL_MACHINE";

std::string settings(const char *root, const std::string &entry) {
    std::string text = "REGEDIT4\n";
    for (const char *key : {"Texture Paths", "Photometric Web Paths"}) {
        text += std::string("\n[") + root + "\\Software\\Meridane\\Vandermire\\" + key + "]\n";
        for (int i = 0; i < 2; ++i) {
            const std::string number = std::to_string(i);
            text.append("\"")
                .append(number)
                .append("\"=\"/maps/")
                .append(entry)
                .append(number)
                .append("\"\n");
        }
    }
    return text;
}

void writeSettings(const Folder &folder) {
    std::ofstream(folder.at("user.reg")) << settings(kUser, "a");
    std::ofstream(folder.at("machine.reg")) << settings(kMachine, "a");
    ::setenv("VX_REGISTRY_DIR", folder.at("").c_str(), 1);
}

void *load(const char *library) {
    void *handle = ::dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) std::abort();
    return handle;
}

// A life of the library that changes one list of the user's.
void changed(benchmark::State &state) {
    const Folder folder;
    writeSettings(folder);
    int round = 0;
    for (auto _ : state) {
        void *library = load(VX_LIBRARY);
        const auto get =
            reinterpret_cast<decltype(&vxPathStoreGet)>(::dlsym(library, "vxPathStoreGet"));
        const auto insert =
            reinterpret_cast<decltype(&vxSearchPathInsert)>(::dlsym(library, "vxSearchPathInsert"));
        const auto remove =
            reinterpret_cast<decltype(&vxSearchPathRemove)>(::dlsym(library, "vxSearchPathRemove"));
        VxSearchPath *list = get(VX_CATEGORY_TEXTURES, VX_LEVEL_USER);
        remove(list, 0);
        insert(list, 0, ++round % 2 == 0 ? "/maps/even" : "/maps/odd");
        ::dlclose(library);
    }
}

void bareSave(benchmark::State &state) {
    const Folder folder;
    const std::string text = settings(kUser, "a");
    for (auto _ : state) {
        const int file =
            ::open(folder.at("user.reg.new").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        if (::write(file, text.data(), text.size()) < 0 || ::fsync(file) != 0) {
            state.SkipWithError("cannot write");
            break;
        }
        ::close(file);
        std::rename(folder.at("user.reg.new").c_str(), folder.at("user.reg").c_str());
    }
}

void life(benchmark::State &state) {
    const Folder folder;
    writeSettings(folder);
    for (auto _ : state)
        ::dlclose(load(VX_LIBRARY));
}

bool readFile(const std::string &path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    char text[4096];
    const bool good = ::fstat(file, &status) == 0 && ::read(file, text, sizeof text) > 0;
    ::close(file);
    return good;
}

// A library that does nothing but depends on the same others. Both files of settings are read at
// load and at unload, which no library with these settings can do without.
void neededCalls(benchmark::State &state) {
    const Folder folder;
    writeSettings(folder);
    const std::string files[] = {folder.at("user.reg"), folder.at("machine.reg")};
    for (auto _ : state) {
        void *library = load(VX_EMPTY_LIBRARY);
        for (int i = 0; i < 2; ++i) {
            for (const std::string &file : files) {
                if (!readFile(file)) std::abort();
            }
        }
        ::dlclose(library);
    }
}

// Many values under one key. Only the first ones are read into the list, but unloading replaces all
// of them. Each round starts from the same file.
void manyValues(benchmark::State &state) {
    const Folder folder;
    ::setenv("VX_REGISTRY_DIR", folder.at("").c_str(), 1);
    std::string text =
        "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Meridane\\Vandermire\\Texture Paths]\n";
    for (int i = 0; i < state.range(0); ++i) {
        const std::string number = std::to_string(i);
        text.append("\"").append(number).append("\"=\"/maps/").append(number).append("\"\n");
    }
    for (auto _ : state) {
        state.PauseTiming();
        std::ofstream(folder.at("user.reg")) << text;
        state.ResumeTiming();
        ::dlclose(load(VX_LIBRARY));
    }
}

BENCHMARK(changed)->Name("settings/life_with_one_list_changed");
BENCHMARK(bareSave)->Name("settings/write_sync_rename");
BENCHMARK(life)->Name("load_unload/vxutil");
BENCHMARK(neededCalls)->Name("load_unload/empty_library_and_needed_calls");
BENCHMARK(manyValues)->Name("load_unload/values")->Arg(800)->Arg(8000);

}  // namespace
