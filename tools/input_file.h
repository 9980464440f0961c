// Regular files opened for reading.
#ifndef TOOLS_INPUT_FILE_H
#define TOOLS_INPUT_FILE_H

#include "platform/files.h"

#include <string>

namespace tool {

// Throws Error, also for what is not a regular file.
vx::File openRegularFile(const std::string &path);

}  // namespace tool

#endif
