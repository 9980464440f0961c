// Linked to the library: the user's list of textures must be the first argument, and gets the
// second one as its first entry.

#include <vxhandles.h>
#include <vxsearchpath.h>

#include <cstring>

int main(int count, char **arguments) {
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER);
    const VxUniqueText text(vxSearchPathToString(list));
    if (count != 3 || std::strcmp(text.get(), arguments[1]) != 0) return 1;
    return vxSearchPathInsert(list, 0, arguments[2]) == 1 ? 0 : 2;
}
