#include "name_list.h"

#include "report.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tool {

namespace {

// Standard input stays open.
struct StreamCloser {
    void operator()(std::FILE *stream) const {
        if (stream != stdin) std::fclose(stream);
    }
};

struct Line {
    Line() = default;
    ~Line() { std::free(text); }
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    char *text = nullptr;
    std::size_t room = 0;
};

}  // namespace

void forEachListedName(const std::string &file, char separator,
                       const std::function<void(const std::string &)> &use) {
    const std::unique_ptr<std::FILE, StreamCloser> stream(
        file == "-" ? stdin : std::fopen(file.c_str(), "re"));
    const std::string subject = file == "-" ? "standard input" : file;
    if (stream == nullptr) throw systemError(subject);
    Line line;
    for (ssize_t length = 0;
         (length = getdelim(&line.text, &line.room, separator, stream.get())) >= 0;) {
        std::string name(line.text, static_cast<std::size_t>(length));
        if (name.ends_with(separator)) name.pop_back();
        use(name);
    }
    // The end of the stream is the only good reason to stop.
    if (std::feof(stream.get()) == 0) throw systemError(subject);
}

}  // namespace tool
