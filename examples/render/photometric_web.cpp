#include "photometric_web.h"

#include <vxhandles.h>
#include <vxpattern.h>
#include <vxsearchpath.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

// The merged list: the environment's directories, then the machine's, then the user's.
VxSearchPath *webDirectories() {
    return vxPathStoreGet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_MERGED);
}

// The first name, in alphabetical order, of a file in a directory that matches a pattern. Empty if
// there is none, or no such directory.
std::string firstMatch(const char *directory, const char *pattern) {
    std::string first;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        if ((first.empty() || name < first) && entry.is_regular_file(error) &&
            vxMatchPattern(name.c_str(), pattern) != 0)
            first = name;
    }
    return first;
}

// A position among ascending values: between `low` and `low` + 1.
struct Position {
    std::size_t low;
    float share;
    Position(const std::vector<float> &values, float value) : low(0), share(0) {
        if (values.size() < 2) return;
        const auto above = std::upper_bound(values.begin() + 1, values.end() - 1, value);
        low = static_cast<std::size_t>(above - values.begin()) - 1;
        const float width = values[low + 1] - values[low];
        if (width > 0) share = std::clamp((value - values[low]) / width, 0.0F, 1.0F);
    }
};

// Planes that end at 90 or 180 degrees are mirrored to the rest of the circle. A single plane is
// valid all around.
float fold(float horizontal, float last) {
    if (last <= 180 && horizontal > 180) horizontal = 360 - horizontal;
    if (last <= 90 && horizontal > 90) horizontal = 180 - horizontal;
    return horizontal;
}

}  // namespace

VxString findPhotometricWeb(const char *wildcard) {
    char pattern[VX_PATTERN_SIZE];
    if (vxCompileWildcard(wildcard, pattern) == 0) return {};
    const VxSearchPath *list = webDirectories();
    if (list == nullptr) return {};  // out of memory
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const std::string first = firstMatch(vxSearchPathGet(list, i), pattern);
        if (!first.empty()) return first.c_str();
    }
    return {};
}

bool PhotometricWeb::load(const VxString &name) {
    const VxUniqueText path(vxSearchPathResolve(webDirectories(), name, nullptr, 0));
    if (path == nullptr) return false;
    std::optional<IesData> data = readIesFile(path.get());
    if (!data) return false;
    data_ = *std::move(data);
    return true;
}

float PhotometricWeb::candela(float vertical, float horizontal) const {
    if (vertical < data_.vertical.front() || vertical > data_.vertical.back()) return 0;
    const Position angle(data_.vertical, vertical);
    const Position plane(data_.horizontal, fold(horizontal, data_.horizontal.back()));
    const auto inPlane = [&](std::size_t number) {
        const float value = data_.at(number, angle.low);
        if (angle.share <= 0) return value;
        return value + (data_.at(number, angle.low + 1) - value) * angle.share;
    };
    const float here = inPlane(plane.low);
    return plane.share > 0 ? here + (inPlane(plane.low + 1) - here) * plane.share : here;
}
