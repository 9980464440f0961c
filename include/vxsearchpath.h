/*
 * vxsearchpath.h: path text, lists of directories, the store of lists, finding a file.
 *
 * A search path is an ordered list of directories that are searched for a file. The store keeps
 * such lists for two categories of files, textures and photometric webs. Each category has a list
 * of the user, one of the machine and one of the environment, and a list merged from these three.
 * Loading the library reads the lists of user and machine from the registry, and unloading writes
 * them back.
 *
 * Path text is a terminated text in the multibyte code page of the process. Both / and \ are
 * separators on input; except for a \ that ends a double-byte character. / is the
 * canonical separator.
 *
 *   drive prefix   a letter and a colon, as in C:
 *   absolute       begins with / or \ or a drive prefix; C:x counts as absolute
 *   relative       anything else, the empty text included
 *   network path   begins with exactly two backslashes; it keeps its backslashes
 *
 * Nothing here is locked: neither a list nor the store. Not even reading is safe:
 * vxSearchPathFind caches in the list. Each thread works on its own copy.
 */
#ifndef VXSEARCHPATH_H
#define VXSEARCHPATH_H

#include "vxexports.h"

#include <stdint.h>

VX_BEGIN_C

/* ---- Path text ------------------------------------------------------------------------ */

/* 1 for an absolute path, 0 for a relative one and for null. */
VX_API int vxPathIsAbsolute(const char *path);

/*
 * Converts a path to its canonical form, in place, and returns it. The text never gets longer.
 *
 *   - Every separator becomes /, and a run of them becomes one.
 *   - "/./" becomes "/". A component and the "/../" after it are removed together. A path that
 *     climbs above the root stays at the root.
 *   - A trailing / is removed, except in a drive root (C:/). So "/" becomes the empty text, the
 *     canonical form of the root. A last component . or .. without a slash after it stays.
 *   - A network path only loses its trailing separators.
 *   - A drive prefix is a component like any other: C:/../x becomes x.
 */
VX_API char *vxPathNormalize(char *path);

/*
 * Joins a directory and a file name into a normalised path.
 *
 *   dir absolute,     file relative   dir, "/", file
 *   dir anything,     file absolute   file alone
 *   dir not absolute, file relative   null: no way to join
 *   dir anything,     file null       null
 *
 * If `out` is null, the result is allocated by malloc and the caller frees it; it is null without
 * memory. Otherwise the text is built in `out` and the result is `out`. It needs the lengths of
 * `dir` and `file` and 2 more bytes, in the second case the length of `file` and 1 more. `out` may
 * be `dir` itself, or `file` itself if that is absolute, and must not overlap them otherwise.
 * `dir` may be null.
 */
VX_API char *vxPathJoin(const char *dir, const char *file, char *out);

/* ---- Lists ---------------------------------------------------------------------------- */

/*
 * An ordered list of directories. Each entry is the canonical form of an absolute path. The list
 * owns the entries, each allocated by itself. Only a drive root (C:/) ends in a separator. The
 * empty text is the root, and C:. is the current directory of a drive. Entries may be equal.
 *
 * Callers may read the fields, but change them only through the functions below.
 */
typedef struct VxSearchPath {
    uint32_t count;    /* entries */
    uint32_t capacity; /* slots of the array; never 0 */
    char **entries;    /* slot i holds entry i, for i below count */
    int32_t longest;   /* a length in bytes that no entry exceeds, or 0 when it is not known */
} VxSearchPath;

/*
 * A new list from text: directories between semicolons; empty ones are skipped. A relative
 * directory is taken from the current directory, or dropped if that cannot be had, for whatever
 * reason. A drive prefix alone means the current directory of that drive. Null counts as the empty
 * text. The caller frees the list with vxSearchPathFree. The result is null without memory for all
 * of it.
 */
VX_API VxSearchPath *vxSearchPathCreate(const char *text);

/* Frees a list and its entries. Null does nothing. */
VX_API void vxSearchPathFree(VxSearchPath *list);

/*
 * Makes the destination a deep copy of the source. The same list twice, or a null list, does
 * nothing. Without memory the destination does not change.
 */
VX_API void vxSearchPathCopy(VxSearchPath *destination, const VxSearchPath *source);

/* The number of entries. */
VX_API int vxSearchPathCount(const VxSearchPath *list);

/*
 * The text of an entry. It belongs to the list and is valid until that entry is removed or the list
 * is freed. Null for a null list and for an index at or past the count.
 */
VX_API const char *vxSearchPathGet(const VxSearchPath *list, uint32_t index);

/*
 * The index of the first entry that names this path, or -1. Separators count as equal, case
 * matters, and separators at the end of `path` are ignored. The result is also -1 for a relative
 * path and for a null list or path.
 */
VX_API int vxSearchPathIndexOf(const VxSearchPath *list, const char *path);

/*
 * The entries joined by semicolons, allocated by malloc for the caller to free. An empty list gives
 * the empty text. Null without memory. A root entry is the empty text, so vxSearchPathCreate does
 * not bring it back.
 */
VX_API char *vxSearchPathToString(const VxSearchPath *list);

/*
 * Inserts a directory before the entry at the index, or after the last one if the index equals the
 * count. Returns 1 if it was stored. Returns 0, with the entries unchanged, for a null list, a
 * relative path, an index past the count, a path that the list holds already (by
 * vxSearchPathIndexOf), and without memory. In the last case the array may have become larger.
 */
VX_API int vxSearchPathInsert(VxSearchPath *list, uint32_t index, const char *path);

/*
 * Inserts copies of the source's entries before those of the destination. Each of them removes one
 * entry of the same exact text from the destination; entries that are equal within one list stay.
 * A null list on either side does nothing. Without memory the destination does not change.
 */
VX_API void vxSearchPathPrepend(VxSearchPath *destination, const VxSearchPath *source);

/* Removes an entry. Nothing happens without a list or for an index that is not below the count. */
VX_API void vxSearchPathRemove(VxSearchPath *list, uint32_t index);

/* Swaps two entries, under the same conditions. */
VX_API void vxSearchPathSwap(VxSearchPath *list, uint32_t one, uint32_t other);

/* ---- The store ------------------------------------------------------------------------ */

/*
 * Categories and levels. Level 0 is the merged list: the entries of the environment, then those
 * of the machine, then those of the user. A text that occurs on several levels is only kept at
 * the first place; equal entries of one level all stay.
 *
 *   category   environment variable   registry key, under Software\Meridane\Vandermire
 *   1          ZOR_TEXTURE_PATH       Texture Paths
 *   2          ZOR_IES_PATH           Photometric Web Paths
 *
 * Level 1 is the key under HKEY_CURRENT_USER (user.reg), level 2 the one under
 * HKEY_LOCAL_MACHINE (machine.reg), level 3 the variable. Both files are in the folder that
 * VX_REGISTRY_DIR names. Without that variable user.reg is in $XDG_CONFIG_HOME/vxutil or
 * $HOME/.config/vxutil, and machine.reg is in /etc/vxutil. On Windows both are keys of the
 * registry itself.
 *
 * A list is stored as one text value per entry, named by its position from 0. Reading replaces
 * %NAME% by that environment variable, orders the values by the number in their names, takes equal
 * texts once, and skips values that are not texts. It takes at most VX_STORED_LIST_ENTRIES texts.
 * A name of more than 15 bytes, or data of more than 260 bytes (of a text, with its terminator) of
 * whatever type, ends the reading. So a longer entry is stored, but on the next load it and all
 * later entries are ignored.
 *
 * Unloading replaces the values of the four keys by the lists, up to a value that ends the
 * reading. A file that would not change is neither locked nor written. Another process that saves
 * is waited for, for five seconds at most; then nothing is written. On Windows all four keys are
 * written, without a lock. A list that could not be read
 * completely at load is read again first, and the entries added since go before it.
 *
 * Lists are read in the code page that the process has when the library is loaded. For a program
 * that is linked to the library, this is before the program can call setlocale.
 */
enum {
    VX_CATEGORY_TEXTURES = 1,
    VX_CATEGORY_PHOTOMETRIC_WEBS = 2,
    VX_LEVEL_MERGED = 0,
    VX_LEVEL_USER = 1,
    VX_LEVEL_MACHINE = 2,
    VX_LEVEL_ENVIRONMENT = 3,

    VX_STORED_LIST_ENTRIES = 128, /* entries that are read of a stored list */
    VX_STORED_ENTRY_LENGTH = 259  /* bytes of the longest entry that is read, without terminator */
};

/*
 * A list of the store, which keeps owning it. A level list may be changed through the pointer and
 * exists until the library is unloaded. The merged list is a snapshot: it and its entries are
 * valid until the next vxPathStoreSet for this category, and changes to a level list do not show
 * in it until then.
 *
 * Category 0 has an empty merged list and no levels. Null for any other category, for a level
 * outside 0 to 3, and without memory.
 */
VX_API VxSearchPath *vxPathStoreGet(int category, int level);

/*
 * Replaces the contents of a level list by a copy of the caller's list, and discards the merged
 * list of the category. To make changes of a level list visible, give that list itself, or null:
 * then only the merged list is discarded. Without memory for the copy the level list keeps its
 * contents.
 *
 * Returns 0 for level 0, which does nothing, and 1 for every other level. A level above 3 or below
 * 0 copies nothing, but still discards the merged list. A category that does not exist changes
 * nothing.
 */
VX_API int vxPathStoreSet(int category, int level, VxSearchPath *list);

/* ---- Finding a file ------------------------------------------------------------------- */

/*
 * The directory that holds a regular file: the first entry under which the name is found, of the
 * list or else of the merged list of the category (0 for none). The result is the entry's own text
 * and belongs to the list. An absolute name is its own result if it is a regular file. Null if the
 * file is not found, for a null list or name, and without memory.
 *
 * A \ in a relative name works like a /; an absolute name is looked up as it is written. Each
 * directory costs one system call, and a search allocates once.
 */
VX_API const char *vxSearchPathFind(VxSearchPath *list, const char *name, int category);

/*
 * The full path of a file: vxPathJoin of the result of vxSearchPathFind and the name. `out` works
 * as there and needs the longest entry, the name and 2 more bytes. An absolute name gives that
 * name, normalised, whether it exists or not. vxSearchPathFind finds a file that only the root
 * directory holds, but here it has no full path: the result is null.
 */
VX_API char *vxSearchPathResolve(VxSearchPath *list, const char *name, char *out, int category);

/*
 * Looks for a file along text: tries each piece between semicolons followed by "/" and the name,
 * then the name alone. Anything that exists counts, even a directory. Null search text counts as
 * ".". A name that begins with a separator is tried alone. Nothing is normalised.
 *
 * The result is a static buffer of 256 bytes that the next call overwrites, on whatever thread. It
 * is null if nothing was found, for a null or empty name, and without memory. Pieces and names
 * are cut at 255 bytes. A piece that leaves no room for the name is tried by itself.
 */
VX_API const char *vxFindFile(const char *searchText, const char *name);

VX_END_C

#endif
