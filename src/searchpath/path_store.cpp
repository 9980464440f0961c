#include "searchpath/path_store.h"

#include "platform/environment.h"
#include "platform/registry.h"
#include "searchpath/registry_list.h"
#include "searchpath/search_path_list.h"

#include <vxsearchpath.h>

#include <exception>
#include <memory>
#include <utility>

namespace {

constexpr int kCategories = 3;  // 0 has a merged list only
constexpr int kLevels = 4;      // 0 is the merged list

// lists[category][level]. Any may be absent: a level list that could not be made is made when it
// is first asked for, and so is a merged list.
VxSearchPath *lists[kCategories][kLevels];

// Lists that could not be read completely. What is stored may be good, so it must not be replaced
// by the little that is known of it.
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

constexpr int kStoredCategories[] = {VX_CATEGORY_TEXTURES, VX_CATEGORY_PHOTOMETRIC_WEBS};

const char *registryPath(int category) {
    return category == VX_CATEGORY_TEXTURES
               ? "Software\\Meridane\\Vandermire\\Texture Paths"
               : "Software\\Meridane\\Vandermire\\Photometric Web Paths";
}

vx::RegistryRoot rootOf(int level) {
    return level == VX_LEVEL_USER ? vx::RegistryRoot::kUser : vx::RegistryRoot::kMachine;
}

using ListOwner = std::unique_ptr<VxSearchPath, decltype(&vxSearchPathFree)>;

// The list that the registry holds, as far as it can be read.
ListOwner storedList(vx::Registry &registry, int category, bool *isComplete) {
    const std::string text = vx::readRegistryList(registry, registryPath(category));
    ListOwner list(vx::createSearchPath(text.c_str(), isComplete), vxSearchPathFree);
    *isComplete = *isComplete && list != nullptr && registry.isReadable();
    return list;
}

void readList(vx::Registry &registry, int category, int level) {
    bool isComplete = false;
    lists[category][level] = storedList(registry, category, &isComplete).release();
    unread[category][level] = !isComplete;
}

// A list that could not be read before is read now, and what was added meanwhile goes in front of
// it. While it cannot be read, nothing is written.
vx::SaveResult saveList(vx::Registry &registry, int category, int level) {
    const VxSearchPath *list = lists[category][level];
    bool isComplete = true;
    ListOwner stored(nullptr, vxSearchPathFree);
    if (unread[category][level]) {
        stored = storedList(registry, category, &isComplete);
        isComplete = isComplete && vx::prependSearchPath(stored.get(), list);
        list = stored.get();
    }
    if (!isComplete) return vx::SaveResult::kFailed;
    return vx::writeRegistryList(registry, registryPath(category), list);
}

void writeList(vx::Registry &registry, int category, int level) {
    if (lists[category][level] == nullptr) return;
    while (saveList(registry, category, level) == vx::SaveResult::kOutdated)
        continue;
}

// Runs a step for each list of a level. A step that runs out of memory is left out, and so are the
// ones after it: nothing is thrown across the interface.
template <typename Step>
void forEachStoredList(int level, Step step) {
    try {
        vx::Registry registry(rootOf(level));
        for (const int category : kStoredCategories)
            step(registry, category, level);
    } catch (const std::exception &) {
        return;
    }
}

// The three levels of a category, the environment's first; null when there is no memory for it.
VxSearchPath *merged(int category) {
    VxSearchPath *list = vxSearchPathCreate(nullptr);
    for (int level = VX_LEVEL_USER; list != nullptr && level < kLevels; ++level) {
        if (!vx::prependSearchPath(list, lists[category][level])) drop(list);
    }
    return list;
}

}  // namespace

void vx::buildPathStore() {
    lists[VX_CATEGORY_TEXTURES][VX_LEVEL_ENVIRONMENT] =
        vxSearchPathCreate(environmentVariable("ZOR_TEXTURE_PATH"));
    lists[VX_CATEGORY_PHOTOMETRIC_WEBS][VX_LEVEL_ENVIRONMENT] =
        vxSearchPathCreate(environmentVariable("ZOR_IES_PATH"));
    for (const int level : {VX_LEVEL_MACHINE, VX_LEVEL_USER}) {
        for (const int category : kStoredCategories)
            unread[category][level] = true;
        forEachStoredList(level, readList);
        for (const int category : kStoredCategories)
            levelList(category, level);
    }
}

void vx::tearDownPathStore() {
    for (const int level : {VX_LEVEL_USER, VX_LEVEL_MACHINE})
        forEachStoredList(level, writeList);
    for (auto &category : lists) {
        for (VxSearchPath *&list : category)
            drop(list);
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
    if (isLevelList(category, level) && vx::copySearchPath(levelList(category, level), list)) {
        unread[category][level] = false;
    }
    if (category >= 0 && category < kCategories) drop(lists[category][VX_LEVEL_MERGED]);
    return 1;
}
