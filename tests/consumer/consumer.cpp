// A program outside the tree, built against the installed product: writes a picture, finds it along
// a search path and reads it again. Its argument is a scratch folder.

#include <vxexports.h>
#include <vxframework.h>
#include <vximage.h>
#include <vxmessages.h>
#include <vxsearchpath.h>

#include <cstdlib>
#include <string>
#include <vector>

int main(int, char **arguments) {
    const std::string folder = arguments[1];
    std::vector<uint16_t> row = {1, 2, 3};
    VxImage *image =
        vxImageOpen((folder + "/a.sgi").c_str(), "w", VX_IMAGE_RUN_LENGTH | 1U, 2U, 3U, 2U);
    for (int y = 0; y < 2; ++y)
        vxImagePutRow(image, row.data(), y, 0);
    if (vxImageClose(image) != 0) return 1;

    VxSearchPath *list = vxSearchPathCreate(folder.c_str());
    char *path = vxSearchPathResolve(list, "a.sgi", nullptr, VX_CATEGORY_TEXTURES);
    if (path == nullptr) return 2;
    image = vxImageOpen(path, "r");
    std::vector<uint16_t> read(3);
    const bool same = vxImageGetRow(image, read.data(), 1, 0) == 3 && read == row;
    vxImageClose(image);
    std::free(path);
    vxSearchPathFree(list);
    if (vxExportAddress(102) != reinterpret_cast<const void *>(vxPathNormalize)) return 3;
    if (std::string(vxMessageText(VX_MESSAGE_CATALOGUE, VX_MESSAGE_IMAGE_DEFAULT_NAME)).empty())
        return 4;
    return same ? 0 : 5;
}
