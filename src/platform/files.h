// Files by descriptor, and what the system knows of a path. Path bytes go to the system as they
// are. A failure is a negative result, or null.

#ifndef VX_PLATFORM_FILES_H
#define VX_PLATFORM_FILES_H

#include <cstddef>
#include <sys/stat.h>

namespace platform {

// Flags and modes of _open and _sopen, in the numbers that their callers use.
inline constexpr int _O_WRONLY = 0x0001;
inline constexpr int _O_CREAT = 0x0100;
inline constexpr int _O_BINARY = 0x8000;  // all files are binary here
inline constexpr int _SH_DENYNO = 0x40;   // no sharing is ever restricted here

int _open(const char *name, int flags);
int _sopen(const char *name, int flags, int sharing, int permissions);
int _close(int file);

// The number of bytes transferred, which may fall short of `count`; -1 when the system refused.
int _read(int file, void *buffer, unsigned count);
int _write(int file, const void *buffer, unsigned count);

// Moves to a position from the start of the file (`origin` 0) and returns it, or -1.
long _lseek(int file, long position, int origin);

// The length of a file in bytes, or -1.
long _filelength(int file);

using Stat = struct stat;
inline constexpr unsigned _S_IFMT = 0xF000;
inline constexpr unsigned _S_IFREG = 0x8000;
int _stat(const char *path, Stat *result);

// The current directory as new heap text, or null. `buffer` is always null, and `least` the least
// room to be had; a longer directory gets what it needs.
char *_getcwd(char *buffer, std::size_t least);

}  // namespace platform

#endif
