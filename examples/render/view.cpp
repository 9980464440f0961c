#include "view.h"

#include "report.h"

#include <vxbyteorder.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <memory>

// vxSwapRecord246 is for records of six fields of 4 bytes.
static_assert(sizeof(View) == 24);

// Converts between the byte order of the file and that of this machine, in both directions.
static void convertByteOrder(View &view) {
    if constexpr (std::endian::native == std::endian::little) vxSwapRecord246(&view);
}

bool writeView(View view, const std::string &path) {
    const std::string part = path + ".part";
    std::FILE *file = std::fopen(part.c_str(), "wb");
    if (file != nullptr) {
        convertByteOrder(view);
        const bool written = std::fwrite(&view, sizeof view, 1, file) == 1;
        if (std::fclose(file) == 0 && written && std::rename(part.c_str(), path.c_str()) == 0)
            return true;
    }
    reportNotWritten(path, errno);
    if (file != nullptr) std::remove(part.c_str());
    return false;
}

bool readView(View &view, const std::string &path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    if (file == nullptr || std::fread(&view, sizeof view, 1, file.get()) != 1) return false;
    convertByteOrder(view);
    // A view straight up or down does not say which side of the picture is up.
    const Vec direction = view.target - view.eye;
    return std::isfinite(dot(view.eye, view.eye)) && std::isfinite(dot(direction, direction)) &&
           std::hypot(direction.x, direction.z) > 1e-3F;
}
