// The registry: named values under keys, kept in one text file for each root.
//
//   - HKEY_CURRENT_USER is user.reg in $XDG_CONFIG_HOME/vxutil, or in $HOME/.config/vxutil;
//   - HKEY_LOCAL_MACHINE is machine.reg in /etc/vxutil;
//   - with VX_REGISTRY_DIR set, both lie in that folder.
//
// The form of the files stands in registry_file.h. A key open for reading is a snapshot of the
// file at that time. A key open for writing holds a lock on its root against every other opening
// for writing, also by the same thread, until it is closed; its changes reach the file at the
// close, all at once, and a file without changes is left alone. A file that cannot be parsed reads
// as one without keys, and is set aside under another name before a new one takes its place.
//
// Results are 0 for success and another number for a failure, the usual ones by name below.

#ifndef VX_PLATFORM_REGISTRY_H
#define VX_PLATFORM_REGISTRY_H

namespace vx {

enum RootKey { HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE };

class OpenKey;
using HKEY = OpenKey *;

inline constexpr int ERROR_SUCCESS = 0;
inline constexpr int ERROR_FILE_NOT_FOUND = 2;
inline constexpr int ERROR_ACCESS_DENIED = 5;
inline constexpr int ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr int ERROR_WRITE_FAULT = 29;
inline constexpr int ERROR_INVALID_PARAMETER = 87;
inline constexpr int ERROR_MORE_DATA = 234;
inline constexpr int ERROR_NO_MORE_ITEMS = 259;

inline constexpr unsigned KEY_READ = 0x20019;
inline constexpr unsigned KEY_WRITE = 0x20006;

inline constexpr unsigned REG_SZ = 1;
inline constexpr unsigned REG_EXPAND_SZ = 2;
inline constexpr unsigned REG_BINARY = 3;
inline constexpr unsigned REG_DWORD = 4;

// Opens a key that exists. Every key that was opened is closed by RegCloseKey.
int RegOpenKeyExA(RootKey root, const char *path, unsigned access, HKEY *key);

// Opens a key for writing; makes it, its file and the folders above when they are missing.
int RegCreateKeyExA(RootKey root, const char *path, unsigned access, HKEY *key);

// Fetches the value at an index, in the order of the file. `nameSize` goes in as the room in bytes
// with the terminator and comes back as the length without it; `dataSize` goes in as the room and
// comes back as the bytes stored. With too little room for either, ERROR_MORE_DATA.
int RegEnumValueA(HKEY key, unsigned index, char *name, unsigned *nameSize, unsigned *type,
                  unsigned char *data, unsigned *dataSize);

int RegDeleteValueA(HKEY key, const char *name);

// Stores a value, in the place of the one of that name or behind the last one. The size of a text
// counts its terminator.
int RegSetValueExA(HKEY key, const char *name, unsigned type, const unsigned char *data,
                   unsigned size);

// Writes what has changed and ends the key, also when the writing failed; the file is then as it
// was before.
int RegCloseKey(HKEY key);

}  // namespace vx

#endif
