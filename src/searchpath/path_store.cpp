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

// Lists that could not be read, or not whole, for another reason than that there are none: what is
// stored may be good, and must not be written over by what little is known of it.
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
    vx::RootKey root;
    char key[260];
};

RegistryPlace placeOf(int category, int level) {
    RegistryPlace place;
    place.root = level == VX_LEVEL_USER ? vx::HKEY_CURRENT_USER : vx::HKEY_LOCAL_MACHINE;
    std::snprintf(place.key, sizeof place.key, "%s%s%s%s%s", "Software\\", "Meridane", "\\",
                  "Vandermire",
                  category == VX_CATEGORY_TEXTURES ? "\\Texture Paths" : "\\Photometric Web Paths");
    return place;
}

// The list that a registry key holds, null without memory. `failed` tells whether there may be
// more to it.
VxSearchPath *storedList(const RegistryPlace &place, bool *failed) {
    char *text = vxRegistryReadList(place.root, place.key, ';', failed);
    VxSearchPath *list = vxSearchPathCreate(text);
    if (text != nullptr && list == nullptr) *failed = true;
    std::free(text);
    return list;
}

void readRegistry(int category, int level) {
    lists[category][level] = storedList(placeOf(category, level), &unread[category][level]);
    levelList(category, level);
}

// Where the stored list could not be read before, it is read now, and what has been added in the
// meantime goes in front of it; nothing is written when it still cannot be read.
void writeRegistry(int category, int level) {
    const VxSearchPath *list = lists[category][level];
    if (list == nullptr) return;
    const RegistryPlace place = placeOf(category, level);
    if (!unread[category][level]) return vxRegistryWriteList(place.root, place.key, list);
    bool failed = false;
    VxSearchPath *stored = storedList(place, &failed);
    if (!failed && stored != nullptr && searchPathPrepend(stored, list)) {
        vxRegistryWriteList(place.root, place.key, stored);
    }
    vxSearchPathFree(stored);
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
        vxSearchPathCreate(vx::environmentVariable("ZOR_TEXTURE_PATH"));
    lists[VX_CATEGORY_PHOTOMETRIC_WEBS][VX_LEVEL_ENVIRONMENT] =
        vxSearchPathCreate(vx::environmentVariable("ZOR_IES_PATH"));
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
    if (isLevelList(category, level) && searchPathCopy(levelList(category, level), list)) {
        unread[category][level] = false;
    }
    if (category >= 0 && category < kCategories) drop(lists[category][VX_LEVEL_MERGED]);
    return 1;
}
