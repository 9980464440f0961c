#include "input_file.h"

#include "report.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

int openRegularFile(const std::string &path) {
    // A pipe would wait here for somebody who writes.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) throw systemTrouble(path);
    struct stat status = {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode)) return file;
    close(file);
    throw Trouble(path, S_ISDIR(status.st_mode) ? "is a directory" : "is no regular file");
}

}  // namespace tool
