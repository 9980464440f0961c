// Regular files opened for reading.
#ifndef TOOLS_INPUT_FILE_H
#define TOOLS_INPUT_FILE_H

#include <string>

namespace tool {

// A descriptor, which is the caller's. Throws Trouble, also for what is no regular file.
int openRegularFile(const std::string &path);

}  // namespace tool

#endif
