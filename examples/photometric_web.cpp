// The light distribution of a luminaire, from a photometric web file (IES LM-63).
//
//     photometric_web NAME
//
// The name is looked for along the merged list of photometric webs: the directories of
// ZOR_IES_PATH, then those of the registry. The numbers of such a file have a decimal point, and
// are read so while the user's locale may have a comma; what is printed has the user's.

#include <vxsearchpath.h>
#include <vxtext.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <vector>

struct Web {
    std::vector<double> vertical, horizontal;  // angles in degrees; 0 is straight down
    std::vector<double> candela;               // plane after plane, by vertical angle
    double at(std::size_t plane, std::size_t angle) const {
        return candela[plane * vertical.size() + angle];
    }
};

// The numbers of a file, on however many lines they are.
class Numbers {
public:
    explicit Numbers(FILE *file) : file_(file) {}
    bool take(double &number) {
        char *end = nullptr;
        for (;;) {
            number = std::strtod(at_, &end);
            if (end != at_) break;
            if (*at_ == ',') {  // numbers are parted by blanks or commas
                ++at_;
                continue;
            }
            if (*at_ != '\0' || vxReadTrimmedLine(line_, sizeof line_, file_) == nullptr)
                return false;
            at_ = line_;
        }
        at_ = end;
        return std::isfinite(number);
    }
    bool take(std::vector<double> &all, double count) {
        if (!(count >= 1 && count <= 100000)) return false;
        all.resize(static_cast<std::size_t>(count));
        for (double &number : all) {
            if (!take(number)) return false;
        }
        return true;
    }

private:
    FILE *file_;
    char line_[512] = "";  // the format allows 256 bytes
    const char *at_ = line_;
};

// Only files without a table for tilted lamps, and of kind 1 (type C: angles from straight down,
// around the lamp), as nearly all are.
static bool readWeb(FILE *file, Web &web) {
    char line[512];
    if (vxReadTrimmedLine(line, sizeof line, file) == nullptr ||
        std::strncmp(line, "IESNA", 5) != 0)
        return false;
    do {
        if (vxReadTrimmedLine(line, sizeof line, file) == nullptr) return false;
    } while (std::strcmp(line, "TILT=NONE") != 0);
    // lamps, lumens of each, multiplier, angles, planes, kind, units, width, length, height;
    // ballast factor, a reserve, watts
    Numbers numbers(file);
    std::vector<double> head;
    if (!numbers.take(head, 13) || head[5] != 1 || !numbers.take(web.vertical, head[3]) ||
        !numbers.take(web.horizontal, head[4]) || !numbers.take(web.candela, head[3] * head[4])) {
        return false;
    }
    for (double &value : web.candela)
        value *= head[2] * head[10];
    return true;
}

// The mean over the planes at a vertical angle, each plane for half the way to its neighbours.
static double meanCandela(const Web &web, std::size_t angle) {
    const std::size_t last = web.horizontal.size() - 1;
    if (last == 0) return web.at(0, angle);
    double sum = 0;
    for (std::size_t plane = 0; plane < last; ++plane) {
        sum += (web.horizontal[plane + 1] - web.horizontal[plane]) / 2 *
               (web.at(plane, angle) + web.at(plane + 1, angle));
    }
    return sum / (web.horizontal[last] - web.horizontal[0]);
}

// The luminous flux: each zone between two vertical angles takes its part of the sphere.
static double totalLumens(const Web &web) {
    const auto cosine = [](double degrees) { return std::cos(degrees / 180 * std::numbers::pi); };
    double sum = 0;
    for (std::size_t i = 0; i + 1 < web.vertical.size(); ++i) {
        sum += std::numbers::pi * (cosine(web.vertical[i]) - cosine(web.vertical[i + 1])) *
               (meanCandela(web, i) + meanCandela(web, i + 1));
    }
    return sum;
}

static void print(const Web &web) {
    std::printf("candela");
    for (const double plane : web.horizontal)
        std::printf("%9.1f\xC2\xB0", plane);
    for (std::size_t i = 0; i < web.vertical.size(); ++i) {
        std::printf("\n%6.1f\xC2\xB0", web.vertical[i]);
        for (std::size_t plane = 0; plane < web.horizontal.size(); ++plane)
            std::printf("%10.2f", web.at(plane, i));
    }
    std::printf("\ntotal %.2f lm\n", totalLumens(web));
}

int main(int count, char **arguments) {
    std::setlocale(LC_ALL, "");
    if (count != 2) return 2;
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_MERGED);
    char *path = vxSearchPathResolve(list, arguments[1], nullptr, 0);
    FILE *file = path != nullptr ? vxStreamOpen(path, "r") : nullptr;
    std::printf("%s: %s\n", arguments[1], file != nullptr ? path : "not found");
    std::free(path);
    if (file == nullptr) return 1;
    Web web;
    const bool whole = readWeb(file, web);
    vxStreamClose(file);
    if (whole) {
        print(web);
    } else {
        std::printf("no photometric web\n");
    }
    return whole ? 0 : 1;
}
