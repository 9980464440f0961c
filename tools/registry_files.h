// The files that the library keeps the lists of the store in. It reads them before a program
// begins, writes all of them when one ends, and says nothing of what goes wrong.
#ifndef TOOLS_REGISTRY_FILES_H
#define TOOLS_REGISTRY_FILES_H

#include <functional>
#include <string>

namespace tool {

// The file of a level, as vxsearchpath.h tells it; an empty text if there is no place for it.
std::string registryFile(int level);

// Names files whose directories are missing from the lists; are there none? For the merged list
// both files count.
bool reportUnreadableLists(int level);

// Begins an edit: checks whether the user may write, and waits for other edits to end. The program
// then starts anew with these arguments, so that it holds what they have left, and comes back from
// here in that life only.
void beginEdit(int level, char *const *arguments);

// Was this process started by an edit, which others wait for?
bool holdsEditLock();

// Starts this program anew, in the same process. The library does not write.
[[noreturn]] void execSelf(const char *const *arguments);

// Lets the library write its lists after `change`, in a process of its own, and names files that it
// has set aside.
void writeLists(const std::function<void()> &change);

// Keeps the library from writing its lists at the end of this process.
void disableRegistryWrites();

}  // namespace tool

#endif
