// Path text: what the other parts of the search paths need beyond the public functions.

#ifndef VX_SEARCHPATH_PATH_TEXT_H
#define VX_SEARCHPATH_PATH_TEXT_H

// 1 for a text that is not absolute, the empty text included; 0 for null.
int vxPathIsRelative(const char *path);

// 1 for a text that begins with exactly two backslashes; 0 for any other and for null.
int vxPathIsUnc(const char *path);

// 0 when `path` names what `entry` names, else their order at the first difference. Separators
// count as equal, case counts, and separators at the end of `path` alone are forgiven.
int vxPathCompare(const char *entry, const char *path);

// Does the text begin with a letter and a colon.
bool hasDrivePrefix(const char *path);

// Turns each backslash that is a character of its own into a slash.
void convertSeparators(char *path);

#endif
