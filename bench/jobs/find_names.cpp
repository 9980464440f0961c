// Finds names along directories and prints how many it found: find_names FOLDER DIRECTORIES NAMES
//
// The directories are called 0, 1, ... in the folder, the names too; name n lies in directory n
// modulo their number, if anywhere. With VX_BENCH_BARE the same by a loop of stat, without the
// library.

#ifdef VX_BENCH_BARE
#include <sys/stat.h>
#else
#include <vxsearchpath.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

#ifdef VX_BENCH_BARE
int countFound(const std::vector<std::string> &directories, int names) {
    int found = 0;
    std::string path;
    for (int n = 0; n < names; ++n) {
        const std::string name = std::to_string(n);
        for (const std::string &directory : directories) {
            path.assign(directory).append("/").append(name);
            struct stat status;
            if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
                ++found;
                break;
            }
        }
    }
    return found;
}
#else
int countFound(const std::vector<std::string> &directories, int names) {
    std::string text;
    for (const std::string &directory : directories)
        text += directory + ";";
    VxSearchPath *list = vxSearchPathCreate(text.c_str());
    int found = 0;
    for (int n = 0; n < names; ++n) {
        if (vxSearchPathFind(list, std::to_string(n).c_str(), 0) != nullptr) ++found;
    }
    vxSearchPathFree(list);
    return found;
}
#endif

}  // namespace

int main(int count, char **arguments) {
    if (count != 4) return 2;
    std::vector<std::string> directories;
    for (int i = 0; i < std::atoi(arguments[2]); ++i)
        directories.push_back(arguments[1] + ("/" + std::to_string(i)));
    std::printf("%d\n", countFound(directories, std::atoi(arguments[3])));
    return 0;
}
