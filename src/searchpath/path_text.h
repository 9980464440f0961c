// Path text: what the rest of the module needs beyond the public functions.

#ifndef VX_SEARCHPATH_PATH_TEXT_H
#define VX_SEARCHPATH_PATH_TEXT_H

namespace vx {

// Does the text begin with exactly two backslashes?
bool isNetworkPath(const char *path);

// 0 when `path` names what `entry` names, else their order at the first difference. Separators
// count as equal, case counts, and separators at the end of `path` alone do not count.
int comparePaths(const char *entry, const char *path);

// Does the text begin with a letter and a colon?
bool hasDrivePrefix(const char *path);

// Turns each backslash that is a complete character into a slash.
void convertSeparators(char *path);

}  // namespace vx

#endif
