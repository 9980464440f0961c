#include "photometric_web.h"

#include <vxpattern.h>
#include <vxsearchpath.h>
#include <vxtext.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr int kLineRoom = 512;  // the format allows 256 bytes

// The numbers of a file, on however many lines they are, with blanks or commas between them.
class Numbers {
public:
    explicit Numbers(std::FILE *file) : file_(file) {}

    bool take(std::vector<float> &all, float count) {
        if (!(count >= 1 && count <= 100000)) return false;
        all.resize(static_cast<std::size_t>(count));
        return std::all_of(all.begin(), all.end(), [this](float &number) { return take(number); });
    }

private:
    bool take(float &number) {
        for (;;) {
            at_ += std::strspn(at_, ", \t");
            char *end = nullptr;
            number = std::strtof(at_, &end);
            if (end != at_) {
                at_ = end;
                return std::isfinite(number);  // words for what is no number are read, too
            }
            if (*at_ != '\0' || vxReadTrimmedLine(line_, kLineRoom, file_) == nullptr) return false;
            at_ = line_;
        }
    }

    std::FILE *file_;
    char line_[kLineRoom] = "";
    const char *at_ = line_;
};

// The head behind TILT=: lamps, lumens of each, multiplier, angles, planes, kind, units, width,
// length, height; ballast factor, a reserve, watts.
enum { kMultiplier = 2, kAngles = 3, kPlanes = 4, kBallast = 10, kHeadNumbers = 13 };

// The merged list: the environment's directories, then the machine's, then the user's.
VxSearchPath *webDirectories() {
    return vxPathStoreGet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_MERGED);
}

// Where a value lies among ascending ones: between `low` and `low` + 1.
struct Place {
    std::size_t low;
    float share;
    Place(const std::vector<float> &values, float value) : low(0), share(0) {
        if (values.size() < 2) return;
        const auto above = std::upper_bound(values.begin() + 1, values.end() - 1, value);
        low = static_cast<std::size_t>(above - values.begin()) - 1;
        const float width = values[low + 1] - values[low];
        if (width > 0) share = std::clamp((value - values[low]) / width, 0.0F, 1.0F);
    }
};

// Planes up to 90 or 180 degrees stand for the others, which mirror them; a single one for all.
float fold(float horizontal, float last) {
    if (last <= 180 && horizontal > 180) horizontal = 360 - horizontal;
    if (last <= 90 && horizontal > 90) horizontal = 180 - horizontal;
    return horizontal;
}

}  // namespace

VxString photometricWebNamed(const char *wildcard) {
    char pattern[VX_PATTERN_SIZE];
    if (vxCompileWildcard(wildcard, pattern) == 0) return {};
    VxSearchPath *list = webDirectories();
    if (list == nullptr) return {};  // no memory
    for (std::uint32_t i = 0; i < list->count; ++i) {
        std::string first;
        std::error_code missing;  // a directory need not be there
        for (const auto &entry :
             std::filesystem::directory_iterator(vxSearchPathGet(list, i), missing)) {
            const std::string name = entry.path().filename();
            if ((first.empty() || name < first) && entry.is_regular_file(missing) &&
                vxMatchPattern(name.c_str(), pattern) != 0)
                first = name;
        }
        if (!first.empty()) return first.c_str();
    }
    return {};
}

bool PhotometricWeb::load(const VxString &name) {
    VxSearchPath *list = webDirectories();
    char *path = vxSearchPathResolve(list, name, nullptr, 0);
    if (path == nullptr) return false;
    // Numbers in the file have a decimal point, whatever the user's locale has: the stream sees to
    // it.
    std::FILE *file = vxStreamOpen(path, "r");
    std::free(path);
    if (file == nullptr) return false;
    const bool whole = read(file);
    vxStreamClose(file);
    return whole;
}

bool PhotometricWeb::read(std::FILE *file) {
    char line[kLineRoom];
    if (vxReadTrimmedLine(line, kLineRoom, file) == nullptr) return false;
    if (std::strncmp(line, "IESNA", 5) != 0) return false;
    do {
        if (vxReadTrimmedLine(line, kLineRoom, file) == nullptr) return false;
    } while (std::strcmp(line, "TILT=NONE") != 0);

    Numbers numbers(file);
    std::vector<float> head;
    if (!numbers.take(head, kHeadNumbers) || !numbers.take(vertical_, head[kAngles]) ||
        !numbers.take(horizontal_, head[kPlanes]) ||
        !numbers.take(candela_, static_cast<float>(vertical_.size() * horizontal_.size()))) {
        return false;
    }
    for (float &value : candela_)
        value *= head[kMultiplier] * head[kBallast];
    return std::all_of(candela_.begin(), candela_.end(),
                       [](float value) { return std::isfinite(value); }) &&
           std::is_sorted(vertical_.begin(), vertical_.end()) &&
           std::is_sorted(horizontal_.begin(), horizontal_.end());
}

float PhotometricWeb::candela(float vertical, float horizontal) const {
    if (vertical < vertical_.front() || vertical > vertical_.back()) return 0;
    const Place angle(vertical_, vertical);
    const Place plane(horizontal_, fold(horizontal, horizontal_.back()));
    const auto inPlane = [&](std::size_t number) {
        const float *values = &candela_[number * vertical_.size() + angle.low];
        return angle.share > 0 ? values[0] + (values[1] - values[0]) * angle.share : values[0];
    };
    const float here = inPlane(plane.low);
    return plane.share > 0 ? here + (inPlane(plane.low + 1) - here) * plane.share : here;
}
