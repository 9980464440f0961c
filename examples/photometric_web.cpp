// Prints the light distribution of a luminaire, from a photometric web file.
//
//     photometric_web NAME
//
// The name is looked up along the merged list of photometric webs: the directories of ZOR_IES_PATH,
// then those of the registry. The output has the decimal mark of the user's locale.

#include "ies_file.h"

#include <vxhandles.h>
#include <vxsearchpath.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <numbers>

// The mean over the planes at a vertical angle. Each plane counts for half the way to its
// neighbours.
static double meanCandela(const IesData &web, std::size_t angle) {
    const std::size_t last = web.horizontal.size() - 1;
    if (last == 0) return web.at(0, angle);
    double sum = 0;
    for (std::size_t plane = 0; plane < last; ++plane) {
        const double width = double{web.horizontal[plane + 1]} - web.horizontal[plane];
        sum += width / 2 * (double{web.at(plane, angle)} + web.at(plane + 1, angle));
    }
    return sum / (double{web.horizontal[last]} - web.horizontal[0]);
}

// The luminous flux: the sum over the zones of the sphere between two vertical angles.
static double totalLumens(const IesData &web) {
    const auto cosine = [](double degrees) { return std::cos(degrees / 180 * std::numbers::pi); };
    double sum = 0;
    for (std::size_t i = 0; i + 1 < web.vertical.size(); ++i) {
        sum += std::numbers::pi * (cosine(web.vertical[i]) - cosine(web.vertical[i + 1])) *
               (meanCandela(web, i) + meanCandela(web, i + 1));
    }
    return sum;
}

static void print(const IesData &web) {
    std::printf("candela");
    for (const float plane : web.horizontal)
        std::printf("%9.1f\xC2\xB0", double{plane});
    for (std::size_t i = 0; i < web.vertical.size(); ++i) {
        std::printf("\n%6.1f\xC2\xB0", double{web.vertical[i]});
        for (std::size_t plane = 0; plane < web.horizontal.size(); ++plane)
            std::printf("%10.2f", double{web.at(plane, i)});
    }
    std::printf("\ntotal %.2f lm\n", totalLumens(web));
}

int main(int count, char **arguments) {
    std::setlocale(LC_ALL, "");
    if (count != 2) {
        std::fprintf(stderr, "usage: photometric_web NAME\n");
        return 2;
    }
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_MERGED);
    const VxUniqueText path(vxSearchPathResolve(list, arguments[1], nullptr, 0));
    if (path == nullptr) {
        std::printf("%s: not found\n", arguments[1]);
        return 1;
    }
    std::printf("%s: %s\n", arguments[1], path.get());
    const std::optional<IesData> web = readIesFile(path.get());
    if (!web) {
        std::printf("not a photometric web\n");
        return 1;
    }
    print(*web);
}
