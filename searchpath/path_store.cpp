#include "searchpath/path_store.h"

#include "platform/environment.h"
#include "platform/registry.h"
#include "searchpath/registry_list.h"
#include "searchpath/search_path_list.h"

#include <vxsearchpath.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr int kCategories = 3;  // 0 has a merged list only
constexpr int kLevels = 4;      // 0 is the merged list

// lists[category][level]. Any may be absent: a level list that could not be made is made when it
// is first asked for, and so is a merged list.
VxSearchPath *lists[kCategories][kLevels];

// Lists that could not be read, or not whole, for another reason than that there are none. They
// are not written back until a caller replaces them: what is stored may be good.
bool unread[kCategories][kLevels];

bool isLevelList(int category, int level) {
    return category > 0 && category < kCategories && level > 0 && level < kLevels;
}

VxSearchPath *levelList(int category, int level) {
    VxSearchPath *&list = lists[category][level];
    if (list == nullptr) list = vxSearchPathCreate(nullptr);
    return list;
}

void drop(VxSearchPath *&list) {
    vxSearchPathFree(std::exchange(list, nullptr));
}

// The list of a registry key, named here with the place where its text goes.
struct RegistryPlace {
    platform::RootKey root;
    char key[260];
};

RegistryPlace placeOf(int category, int level) {
    RegistryPlace place;
    place.root =
        level == VX_LEVEL_USER ? platform::HKEY_CURRENT_USER : platform::HKEY_LOCAL_MACHINE;
    std::snprintf(place.key, sizeof place.key, "%s%s%s%s%s", "Software\\", "Meridane", "\\",
                  "Vandermire",
                  category == VX_CATEGORY_TEXTURES ? "\\Texture Paths" : "\\Photometric Web Paths");
    return place;
}

void readRegistry(int category, int level) {
    const RegistryPlace place = placeOf(category, level);
    char *text = vxRegistryReadList(place.root, place.key, ';', &unread[category][level]);
    lists[category][level] = vxSearchPathCreate(text);
    if (text != nullptr && lists[category][level] == nullptr) unread[category][level] = true;
    std::free(text);
    levelList(category, level);
}

void writeRegistry(int category, int level) {
    const VxSearchPath *list = lists[category][level];
    if (list == nullptr || unread[category][level]) return;
    const RegistryPlace place = placeOf(category, level);
    vxRegistryWriteList(place.root, place.key, list);
}

// The three levels of a category, the environment's first; null when there is no memory for it.
VxSearchPath *merged(int category) {
    VxSearchPath *list = vxSearchPathCreate(nullptr);
    for (int level = VX_LEVEL_USER; list != nullptr && level < kLevels; ++level) {
        if (!searchPathPrepend(list, lists[category][level])) drop(list);
    }
    return list;
}

}  // namespace

void pathStoreBuild() {
    lists[VX_CATEGORY_TEXTURES][VX_LEVEL_ENVIRONMENT] =
        vxSearchPathCreate(platform::getenv("ZOR_TEXTURE_PATH"));
    lists[VX_CATEGORY_PHOTOMETRIC_WEBS][VX_LEVEL_ENVIRONMENT] =
        vxSearchPathCreate(platform::getenv("ZOR_IES_PATH"));
    for (const int category : {VX_CATEGORY_TEXTURES, VX_CATEGORY_PHOTOMETRIC_WEBS}) {
        readRegistry(category, VX_LEVEL_MACHINE);
        readRegistry(category, VX_LEVEL_USER);
    }
}

void pathStoreTearDown() {
    for (VxSearchPath **category : lists)
        drop(category[VX_LEVEL_MERGED]);
    for (const int category : {VX_CATEGORY_TEXTURES, VX_CATEGORY_PHOTOMETRIC_WEBS}) {
        for (const int level : {VX_LEVEL_USER, VX_LEVEL_MACHINE}) {
            writeRegistry(category, level);
            drop(lists[category][level]);
        }
        drop(lists[category][VX_LEVEL_ENVIRONMENT]);
    }
}

VxSearchPath *vxPathStoreGet(int category, int level) {
    if (level != VX_LEVEL_MERGED) {
        return isLevelList(category, level) ? levelList(category, level) : nullptr;
    }
    if (category < 0 || category >= kCategories) return nullptr;
    VxSearchPath *&list = lists[category][VX_LEVEL_MERGED];
    if (list == nullptr) list = merged(category);
    return list;
}

int vxPathStoreSet(int category, int level, VxSearchPath *list) {
    if (level == VX_LEVEL_MERGED) return 0;
    if (isLevelList(category, level)) {
        VxSearchPath *mine = levelList(category, level);
        vxSearchPathCopy(mine, list);
        if (list != nullptr && list != mine) unread[category][level] = false;
    }
    if (category >= 0 && category < kCategories) drop(lists[category][VX_LEVEL_MERGED]);
    return 1;
}
