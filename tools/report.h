// What the program says to people, and how it ends.
#ifndef TOOLS_REPORT_H
#define TOOLS_REPORT_H

#include <stdexcept>
#include <string>

namespace tool {

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2 };

// Something that stops the work on one file, directory or name.
class Error : public std::runtime_error {
public:
    Error(const std::string &subject, const std::string &what)
        : std::runtime_error(what), subject_(subject) {}
    const std::string &subject() const { return subject_; }

private:
    std::string subject_;
};

// Error with a file, in the system's words for errno.
Error systemError(const std::string &path);

// Text in a line on standard output. On a terminal, what is not a character to show in the locale
// becomes a question mark; in a pipe or a file, control characters do.
std::string printable(const std::string &text);

// The same for a name that scripts take over: a pipe or a file gets it as it is.
std::string printableName(const std::string &text);

enum class ColourUse { kOnTerminals, kAlways, kNever };

// At first on terminals, unless NO_COLOR is set or TERM is "dumb".
void setColourUse(ColourUse use);

enum class Tone { kGood, kBad, kFaint };

// Text for standard output, in colour where colour is used.
std::string toned(Tone tone, const std::string &text);

// One line on standard error, printable in the same way, after what was printed before it.
void printError(const std::string &subject, const std::string &what);

}  // namespace tool

#endif
