/*
 * vxsearchpath.h: path text, lists of directories, the store of lists, finding a file.
 *
 * A search path is an ordered list of directories along which a file is looked for. The
 * store keeps such lists for two categories of files, textures and photometric webs; each
 * category has a list of its user, one of its machine and one of its environment, and a
 * merged list made of the three. The first two are read from the registry when the library
 * is loaded and written back when it is unloaded.
 *
 * Path text is a terminated text in the multibyte code page of the process. Both / and \ are
 * separators on input, a \ only where it is a character of its own and not the second byte of
 * a double-byte character. / is the canonical separator.
 *
 *   drive prefix   a letter and a colon, as in C:
 *   absolute       begins with / or \ or a drive prefix; C:x counts as absolute
 *   relative       anything else, the empty text included
 *   network path   begins with exactly two backslashes; it keeps its backslashes
 *
 * Nothing here is locked: neither a list nor the store. Reading is no exception, since
 * vxSearchPathFind notes what it learns in the list.
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
 * Brings a path to its canonical form, in place, and returns it. The text only gets shorter.
 *
 * Separators become /, runs of them one; "/./" becomes "/"; a component and the "/../" behind
 * it go away together, and what climbs above the root stays at the root; a trailing / is
 * dropped, but that of a drive root (C:/). So "/" becomes the empty text, which is the
 * canonical form of the root. A last component . or .. without a slash behind it stays. A
 * network path only loses its trailing separators. The drive prefix counts as a component
 * like any other: C:/../x becomes x.
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
 * With `out` null the result is new heap text that the caller releases with free, or null when
 * there is no memory. Otherwise the text is built in `out`, which has room for the lengths of
 * `dir` and `file` and 2 bytes more (in the second case for `file` and its terminator), and
 * the result is `out`. `out` must not overlap the other two. `dir` may be null.
 */
VX_API char *vxPathJoin(const char *dir, const char *file, char *out);

/* ---- Lists ---------------------------------------------------------------------------- */

/*
 * An ordered list of directories. Each entry is the canonical form of an absolute path, as its
 * own heap text that the list owns; no entry ends in a separator but a drive root (C:/). The
 * empty text is the root, and C:. the current directory of a drive. Entries may be equal.
 *
 * Callers may read the fields, and change them through the functions below only.
 */
typedef struct VxSearchPath {
    uint32_t count;    /* entries */
    uint32_t capacity; /* slots of the array; never 0 */
    char **entries;    /* slot i holds entry i, for i below count */
    int32_t longest;   /* a length in bytes that no entry exceeds, or 0 when it is not known */
} VxSearchPath;

/*
 * A new list from text: directories between semicolons; empty ones are passed over. A relative
 * directory is taken from the current directory, or dropped when there is none. A drive prefix
 * alone names the current directory of that drive. Null counts as the empty text. The caller
 * ends the list with vxSearchPathFree. Null when there is no memory for all of it.
 */
VX_API VxSearchPath *vxSearchPathCreate(const char *text);

/* Ends a list and releases its entries. Null does nothing. */
VX_API void vxSearchPathFree(VxSearchPath *list);

/*
 * Makes the destination a deep copy of the source. The same list twice, or a null list, does
 * nothing. Without memory the destination stays as it was.
 */
VX_API void vxSearchPathCopy(VxSearchPath *destination, const VxSearchPath *source);

/* The number of entries. */
VX_API int vxSearchPathCount(const VxSearchPath *list);

/*
 * The text of an entry, which stays the list's and is good until that entry is removed or the
 * list ends. Null for a null list and for an index at or past the count.
 */
VX_API const char *vxSearchPathGet(const VxSearchPath *list, uint32_t index);

/*
 * The index of the first entry that names this path, or -1. Separators count as equal, case
 * counts, and separators at the end of `path` are forgiven. A relative path, a null list and
 * null text give -1.
 */
VX_API int vxSearchPathIndexOf(const VxSearchPath *list, const char *path);

/*
 * The entries with a semicolon between each two, as new heap text that the caller releases with
 * free; the empty text for an empty list; null when there is no memory. A root entry is an
 * empty text and does not survive the way back through vxSearchPathCreate.
 */
VX_API char *vxSearchPathToString(const VxSearchPath *list);

/*
 * Puts a directory before the entry at the index, or behind the last one for an index equal to
 * the count. 1 when it was stored. 0, with nothing changed, for a null list, a path that is not
 * absolute, an index past the count, a path that vxSearchPathIndexOf finds in the list as it
 * is written, and when there is no memory.
 */
VX_API int vxSearchPathInsert(VxSearchPath *list, uint32_t index, const char *path);

/*
 * Puts the source's directories in front of the destination's, and takes out of the
 * destination what they repeat (by exact text). A null list on either side does nothing.
 * Without memory the destination stays as it was.
 */
VX_API void vxSearchPathPrepend(VxSearchPath *destination, const VxSearchPath *source);

/* Takes an entry out. A null list and an index at or past the count do nothing. */
VX_API void vxSearchPathRemove(VxSearchPath *list, uint32_t index);

/* Exchanges two entries. A null list and an index at or past the count do nothing. */
VX_API void vxSearchPathSwap(VxSearchPath *list, uint32_t one, uint32_t other);

/* ---- The store ------------------------------------------------------------------------ */

/*
 * Categories and levels. Level 0 is the merged list: the entries of the environment, then those
 * of the machine, then those of the user; a text that occurs on several levels stands only at
 * the front.
 *
 *   category   environment variable   registry key, under Software\Meridane\Vandermire
 *   1          ZOR_TEXTURE_PATH       Texture Paths
 *   2          ZOR_IES_PATH           Photometric Web Paths
 *
 * Level 1 is the key under HKEY_CURRENT_USER (user.reg), level 2 the one under
 * HKEY_LOCAL_MACHINE (machine.reg), level 3 the variable. Both files lie in the folder that
 * VX_REGISTRY_DIR names; without that variable user.reg lies in $XDG_CONFIG_HOME/vxutil or
 * $HOME/.config/vxutil, and machine.reg in /etc/vxutil.
 *
 * A list is stored as one text value an entry, named by its position from 0. On reading,
 * %NAME% is replaced by that environment variable, values are ordered by the number in their
 * names, texts that occur twice are taken once, and what is no text is passed over. At most
 * 128 values are read; a name of more than 15 bytes, or data of more than 260 bytes (of a text,
 * with its terminator), whatever its type, ends the reading. So an entry of more than 259 bytes is
 * stored but hides itself and all behind it. Unloading replaces the values of the four keys up to
 * such a one, of whatever type, by the lists; a list that could not be read at load is read again
 * first, and what was added goes in front of it.
 *
 * Lists are read in the code page that the process has when the library is loaded, which for a
 * program that is linked to it is before the program can call setlocale.
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
 * A list of the store, which stays the store's. A level list may be changed through the
 * pointer, and lives until the library is unloaded. The merged list is a snapshot: it and its
 * entries are good until vxPathStoreSet is next called for this category, and what is changed
 * in a level list does not show in it until then.
 *
 * Category 0 has an empty merged list and no levels. Null for any other category, for a level
 * outside 0 to 3, and when there is no memory.
 */
VX_API VxSearchPath *vxPathStoreGet(int category, int level);

/*
 * Replaces the contents of a level list by a copy of the caller's list, and voids the merged
 * list of the category. With a null list, or the store's own list given back after changes to
 * it, only the latter. 0 for level 0, which does nothing; 1 for every other level. A level
 * above 3 or below 0 copies nothing but still voids the merged list; a category that does not
 * exist touches nothing. Without memory for the copy the level list keeps its contents.
 */
VX_API int vxPathStoreSet(int category, int level, VxSearchPath *list);

/* ---- Finding a file ------------------------------------------------------------------- */

/*
 * The directory that holds a file, a regular one: the first entry of the list, or else of the
 * merged list of the category (0 for none), under which the name is found. The result is the
 * entry's own text and stays the list's. An absolute name is its own answer when it is a regular
 * file. Null when the file is not found, for a null list or name, and when there is no memory.
 *
 * A \ in a relative name works as / does; an absolute one is looked up as it stands. One call of
 * the system tests one directory, and one allocation serves the whole walk.
 */
VX_API const char *vxSearchPathFind(VxSearchPath *list, const char *name, int category);

/*
 * The full path of a file: vxPathJoin of what vxSearchPathFind gives and the name. `out` works
 * as there, with room for the longest entry, the name and 2 bytes more. An absolute name gives
 * that name, normalised, whether it exists or not. A file in the root directory alone is
 * found by vxSearchPathFind, but has no full path here: the result is null.
 */
VX_API char *vxSearchPathResolve(VxSearchPath *list, const char *name, char *out, int category);

/*
 * Looks for a file along text: tries each piece between semicolons with "/" and the name
 * behind it, then the name alone. Anything that exists counts, a directory too. Null search
 * text counts as "."; a name that begins with a separator is tried alone. Nothing is normalised.
 *
 * The result is a static buffer of 256 bytes that the next call overwrites, from whatever
 * thread, or null when nothing was found, for a null or empty name, and when there is no
 * memory. Pieces and names are cut at 255 bytes; a piece too long to take the name is tried as
 * it stands.
 */
VX_API const char *vxFindFile(const char *searchText, const char *name);

VX_END_C

#endif
