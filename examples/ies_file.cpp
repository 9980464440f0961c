#include "ies_file.h"

#include <vxhandles.h>
#include <vxtext.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kLineSize = 512;  // the format allows lines of 256 bytes

// The numbers after TILT=: lamps, lumens per lamp, multiplier, angles, planes, type, units, width,
// length, height, ballast factor, a reserved number, watts.
enum { kMultiplier = 2, kAngles = 3, kPlanes = 4, kType = 5, kBallast = 10, kHeadNumbers = 13 };
constexpr float kTypeC = 1;

// Takes the numbers of a file one after another. Any number of them can be in one line, with blanks
// or commas between them.
class NumberReader {
public:
    explicit NumberReader(std::FILE *file) : file_(file) {}

    bool take(std::vector<float> &numbers, float count) {
        if (!(count >= 1 && count <= 100000)) return false;
        numbers.resize(static_cast<std::size_t>(count));
        return std::ranges::all_of(numbers, [this](float &number) { return take(number); });
    }

private:
    bool take(float &number) {
        for (;;) {
            at_ += std::strspn(at_, ", \t");
            char *end = nullptr;
            number = std::strtof(at_, &end);
            if (end != at_) {
                at_ = end;
                return std::isfinite(number);  // strtof also accepts "inf" and "nan"
            }
            if (*at_ != '\0' || vxReadTrimmedLine(line_, kLineSize, file_) == nullptr) return false;
            at_ = line_;
        }
    }

    std::FILE *file_;
    char line_[kLineSize] = "";
    const char *at_ = line_;
};

bool skipToNumbers(std::FILE *file) {
    char line[kLineSize];
    if (vxReadTrimmedLine(line, kLineSize, file) == nullptr) return false;
    if (std::strncmp(line, "IESNA", 5) != 0) return false;
    do {
        if (vxReadTrimmedLine(line, kLineSize, file) == nullptr) return false;
    } while (std::strcmp(line, "TILT=NONE") != 0);
    return true;
}

bool isUsable(const IesData &data) {
    return std::ranges::all_of(data.candela, [](float value) { return std::isfinite(value); }) &&
           std::ranges::is_sorted(data.vertical) && std::ranges::is_sorted(data.horizontal);
}

}  // namespace

std::optional<IesData> readIesFile(const char *path) {
    // The numbers have a decimal point, but the user's locale may have a comma. This stream makes
    // strtof expect the point until it is closed.
    const VxUniqueStream file(vxStreamOpen(path, "r"));
    if (file == nullptr || !skipToNumbers(file.get())) return std::nullopt;
    NumberReader numbers(file.get());
    std::vector<float> head;
    IesData data;
    if (!numbers.take(head, kHeadNumbers) || head[kType] != kTypeC ||
        !numbers.take(data.vertical, head[kAngles]) ||
        !numbers.take(data.horizontal, head[kPlanes]) ||
        !numbers.take(data.candela, head[kAngles] * head[kPlanes]))
        return std::nullopt;
    for (float &value : data.candela)
        value *= head[kMultiplier] * head[kBallast];
    if (!isUsable(data)) return std::nullopt;
    return data;
}
