// Names in a file or on standard input.
#ifndef TOOLS_NAME_LIST_H
#define TOOLS_NAME_LIST_H

#include <functional>
#include <string>

namespace tool {

// Calls `use` for each name as soon as it is read. "-" is standard input.
// Throws Error.
void forEachListedName(const std::string &file, char separator,
                       const std::function<void(const std::string &)> &use);

}  // namespace tool

#endif
