// Finds textures by name, reads them, and writes copies that other programs can read.
//
//     find_texture NAME...
//
// Each name is looked up along the merged list of textures: the directories of ZOR_TEXTURE_PATH,
// then those of the machine's and of the user's registry. The copy of a texture is run-length
// encoded, and goes to the current directory.

#include <vxhandles.h>
#include <vximage.h>
#include <vxsearchpath.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

static void describe(const char *path, const VxImage *image, const VxPicture &picture) {
    const auto [low, high] = std::ranges::minmax(picture.elements);
    std::printf("  found as %s\n", path);
    std::printf("  %d x %d x %d, %d byte(s) per element, %s, %s byte order, elements %d to %d\n",
                picture.width, picture.height, picture.planes, picture.elementBytes,
                image->type >> 8 != 0 ? "run-length" : "verbatim",
                image->byteSwap != 0 ? "the other" : "this machine's", low, high);
}

static std::string fileNameOf(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

static bool readAndCopy(const char *path) {
    const VxUniqueImage image(vxImageOpen(path, "r"));
    const std::optional<VxPicture> picture = vxPictureRead(image.get());
    if (!picture) {
        std::printf("  cannot read %s\n", path);
        return false;
    }
    describe(path, image.get(), *picture);
    const std::string copy = "copy_of_" + fileNameOf(path);
    const bool same =
        vxPictureWrite(copy.c_str(), *picture) && vxPictureRead(copy.c_str()) == picture;
    std::printf("  written to %s and read again: %s\n", copy.c_str(),
                same ? "all elements agree" : "NOT the same");
    return same;
}

static bool processTexture(VxSearchPath *list, const char *name) {
    std::printf("%s\n", name);
    const VxUniqueText path(vxSearchPathResolve(list, name, nullptr, 0));
    if (path != nullptr) return readAndCopy(path.get());
    std::printf("  not found\n");
    return false;
}

int main(int count, char **arguments) {
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
    if (list == nullptr) return 1;  // out of memory
    std::printf("Textures are looked up in\n");
    for (int i = 0; i < vxSearchPathCount(list); ++i) {
        std::printf("  %s\n", vxSearchPathGet(list, static_cast<std::uint32_t>(i)));
    }
    bool complete = true;
    for (int i = 1; i < count; ++i)
        complete = processTexture(list, arguments[i]) && complete;
    return complete ? 0 : 1;
}
