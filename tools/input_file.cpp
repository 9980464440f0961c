#include "input_file.h"

#include "report.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace tool {

vx::File openRegularFile(const std::string &path) {
    // A pipe would wait here for somebody who writes.
    vx::File file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) throw systemError(path);
    struct stat status = {};
    if (fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) return file;
    throw Error(path, S_ISDIR(status.st_mode) ? "is a directory" : "is not a regular file");
}

}  // namespace tool
