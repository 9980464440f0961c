// The road of a texture, from its name to its pixels and back into a file.
//
//     texture_road NAME...
//
// Each name is looked for along the merged list of textures: the directories of ZOR_TEXTURE_PATH,
// then those of the machine's and of the user's registry. What is found is read row by row, written
// to the current directory run-length encoded and in the byte order that other programs read, and
// read again.

#include <vximage.h>
#include <vxsearchpath.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using Elements = std::vector<uint16_t>;

// All elements of an image, plane after plane; fewer when a row cannot be read.
static Elements readAll(VxImage *image) {
    Elements all, row(image->xSize);
    for (int z = 0; z < image->zSize; ++z) {
        for (int y = 0; y < image->ySize; ++y) {
            if (vxImageGetRow(image, row.data(), y, z) < 0) return all;
            all.insert(all.end(), row.begin(), row.end());
        }
    }
    return all;
}

static void describe(const char *path, const VxImage *image, const Elements &elements) {
    const auto [low, high] = std::minmax_element(elements.begin(), elements.end());
    std::printf("  found as %s\n", path);
    std::printf("  %d x %d x %d, %d byte(s) an element, %s, %s byte order, elements %d to %d\n",
                image->xSize, image->ySize, image->zSize, image->type & 0xFF,
                image->type >> 8 != 0 ? "run-length" : "verbatim",
                image->byteSwap != 0 ? "the other" : "this machine's", *low, *high);
}

// A copy of an image under another name, run-length encoded and in published byte order.
static bool writeCopy(const std::string &name, const VxImage *original, Elements elements) {
    const unsigned type = VX_IMAGE_RUN_LENGTH | (original->type & 0xFFU);
    VxImage *copy = vxImageOpen(name.c_str(), "w", type, 3U, unsigned{original->xSize},
                                unsigned{original->ySize}, unsigned{original->zSize});
    if (copy == nullptr) return false;
    vxImageUseBigEndian(copy);
    bool whole = true;
    uint16_t *row = elements.data();
    for (int z = 0; z < original->zSize; ++z) {
        for (int y = 0; y < original->ySize; ++y, row += original->xSize) {
            whole = vxImagePutRow(copy, row, y, z) >= 0 && whole;
        }
    }
    return vxImageClose(copy) == 0 && whole;
}

static bool fileHolds(const std::string &name, const Elements &elements) {
    VxImage *image = vxImageOpen(name.c_str(), "r");
    if (image == nullptr) return false;
    const bool agree = readAll(image) == elements;
    vxImageClose(image);
    return agree;
}

// Reads an image found at `path`, and keeps a copy of it in the current directory.
static bool readAndCopy(const char *path) {
    VxImage *image = vxImageOpen(path, "r");
    if (image == nullptr) return false;
    const Elements elements = readAll(image);
    bool agree = false;
    if (elements.size() == std::size_t{image->xSize} * image->ySize * image->zSize) {
        describe(path, image, elements);
        const std::string place(path);
        const std::string copy = "copy_of_" + place.substr(place.rfind('/') + 1);
        agree = writeCopy(copy, image, elements) && fileHolds(copy, elements);
        std::printf("  written to %s and read again: %s\n", copy.c_str(),
                    agree ? "all elements agree" : "NOT the same");
    }
    vxImageClose(image);
    return agree;
}

static bool takeTheRoad(const char *name) {
    std::printf("%s\n", name);
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
    char *path = vxSearchPathResolve(list, name, nullptr, 0);
    if (path == nullptr) {
        std::printf("  not found\n");
        return false;
    }
    const bool good = readAndCopy(path);
    std::free(path);
    return good;
}

int main(int count, char **arguments) {
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
    std::printf("Textures are looked for in\n");
    for (int i = 0; i < vxSearchPathCount(list); ++i) {
        std::printf("  %s\n", vxSearchPathGet(list, static_cast<uint32_t>(i)));
    }
    bool good = true;
    for (int i = 1; i < count; ++i)
        good = takeTheRoad(arguments[i]) && good;
    return good ? 0 : 1;
}
