#include "picture_format.h"

#include "input_file.h"
#include "inputs.h"
#include "png_file.h"
#include "report.h"
#ifdef VX_TOOL_JPEG
#include "jpeg_file.h"
#endif
#ifdef VX_TOOL_TIFF
#include "tiff_file.h"
#endif

#include <string_view>
#include <utility>

namespace tool {

namespace {

using namespace std::string_view_literals;

struct Signature {
    Format format;
    std::string_view bytes;
};

constexpr Signature kSignatures[] = {
    {Format::kPng, "\x89PNG\r\n\x1a\n"sv},
    {Format::kTiff, "II*\0"sv},
    {Format::kTiff, "MM\0*"sv},
    {Format::kTiff, "II+\0"sv},
    {Format::kTiff, "MM\0+"sv},
    {Format::kJpeg, "\xff\xd8\xff"sv},
};

struct Extension {
    Format format;
    std::string_view name;
};

constexpr Extension kExtensions[] = {
    {Format::kPng, "png"},
#ifdef VX_TOOL_TIFF
    {Format::kTiff, "tif"}, {Format::kTiff, "tiff"},
#endif
#ifdef VX_TOOL_JPEG
    {Format::kJpeg, "jpg"}, {Format::kJpeg, "jpeg"},
#endif
};

[[noreturn]] void refuseFormat(Format format, const std::string &path) {
    throw Error(path, std::string("is a ") + (format == Format::kTiff ? "TIFF" : "JPEG") +
                          " file, which this program was built without");
}

}  // namespace

Format formatOfFile(const std::string &path) {
    const vx::File file = openRegularFile(path);
    char first[8];
    const int got = vx::readFile(file.get(), first, sizeof first);
    if (got < 0) throw systemError(path);
    const std::string_view bytes(first, static_cast<std::size_t>(got));
    for (const Signature &signature : kSignatures)
        if (bytes.starts_with(signature.bytes)) return signature.format;
    return Format::kImage;
}

Format formatOfName(const std::string &path) {
    const std::string name = extensionOf(path);
    for (const Extension &extension : kExtensions)
        if (name == extension.name) return extension.format;
    return isImageName(path) ? Format::kImage : Format::kUnknown;
}

std::string writableExtensions() {
    std::string all;
    for (const Extension &extension : kExtensions)
        all.append(".").append(extension.name).append(", ");
    return all + imageExtensions();
}

std::unique_ptr<PictureSource> openForeign(Format format, const std::string &path) {
#ifdef VX_TOOL_TIFF
    if (format == Format::kTiff) return std::make_unique<TiffSource>(path);
#endif
#ifdef VX_TOOL_JPEG
    if (format == Format::kJpeg) return std::make_unique<JpegSource>(path);
#endif
    if (format != Format::kPng) refuseFormat(format, path);
    return std::make_unique<PngSource>(path);
}

std::unique_ptr<PictureSink> createForeign(Format format, const std::string &path, vx::File file,
                                           const PictureForm &form) {
#ifdef VX_TOOL_TIFF
    if (format == Format::kTiff) return std::make_unique<TiffSink>(path, std::move(file), form);
#endif
#ifdef VX_TOOL_JPEG
    if (format == Format::kJpeg) return std::make_unique<JpegSink>(path, std::move(file), form);
#endif
    if (format != Format::kPng) refuseFormat(format, path);
    return std::make_unique<PngSink>(path, std::move(file), form);
}

}  // namespace tool
