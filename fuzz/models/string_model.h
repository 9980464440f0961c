// Strings compared with those of the standard library: runs of changes, and searches.

#ifndef VX_FUZZ_MODELS_STRING_MODEL_H
#define VX_FUZZ_MODELS_STRING_MODEL_H

#include "platform/code_page.h"

#include <vxstring.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

inline VxString made(std::string_view text) {
    return vxStringFrom(text);
}

inline std::string text(const VxString &string) {
    return std::string(vxStringView(string));
}

inline const char *body(const VxString &string) {
    return string;
}

// A text over and over again, up to a length.
inline std::string repeated(const std::string &text, std::size_t length) {
    std::string result;
    while (!text.empty() && result.size() < length)
        result += text;
    return result.substr(0, length);
}

inline std::string mapped(std::string text, char (*change)(char)) {
    std::transform(text.begin(), text.end(), text.begin(), change);
    return text;
}

// Every operation that changes text, on strings that share bodies at random.
class StringModel {
public:
    // One change. below(n) chooses a number from 0 to n - 1.
    template <typename Below>
    void change(Below below) {
        const int i = below(kStrings);
        const int j = below(kStrings);
        VxString &s = strings_[i];
        std::string &m = models_[i];
        const int n = s.length();
        const int start = below(n + 1);
        const int count = below(n - start + 1);
        const auto byte = static_cast<char>(below(256));
        const auto at = static_cast<std::size_t>(start);
        const auto many = static_cast<std::size_t>(count);
        const int action = n > 200 ? 2 : below(8);
        if (action == 0) {
            s = strings_[j];
            m = models_[j];
        } else if (action == 1) {
            s += strings_[j];
            m += std::string(models_[j]);
        } else if (action == 2) {
            const bool deletes = n > 200 || i == j;
            s.set(start, count, deletes ? VxString() : strings_[j]);
            m.replace(at, many, deletes ? "" : models_[j]);
        } else if (action == 3) {
            s = strings_[j] + VxString(byte);
            m = models_[j] + byte;
        } else if (action == 4) {
            s = s.get(start, count);
            m = m.substr(at, many);
        } else if (action == 5) {
            s.setMemoryHint(below(2) == 0 ? VxString::kDoubleRoom : VxString::kExactRoom);
            if (below(2) == 0) s.setLengthHint(n + below(20));
        } else if (action == 6) {
            s.toLower().toUpper();
            m = mapped(m, vx::uppered);
        } else if (start < n) {
            s[start] = byte;
            m[at] = byte;
        }
    }

    // How the strings differ from their models; empty if they do not.
    std::string difference() const {
        for (int k = 0; k < kStrings; ++k) {
            if (text(strings_[k]) != models_[k]) {
                return "string " + std::to_string(k) + " is " + text(strings_[k]) + ", not " +
                       models_[k];
            }
            if (body(strings_[k])[strings_[k].length()] != '\0') return "a lost terminator";
        }
        return "";
    }

    const std::string &model(int k) const { return models_[k]; }

private:
    static constexpr int kStrings = 6;
    VxString strings_[kStrings];
    std::string models_[kStrings];
};

// All searches: the result of each, and that of std::string, whose npos is -1 as an int.
inline std::vector<std::pair<int, int>> searches(const std::string &in, const std::string &what,
                                                 char byte, std::size_t from) {
    using vx::lowered;
    const auto find = [&](const std::string &text, const std::string &pattern) {
        return static_cast<int>(text.find(pattern.empty() ? std::string(1, '\0') : pattern, from));
    };
    const auto findLast = [&](const std::string &text, char last) {
        return from < text.size() ? static_cast<int>(text.rfind(last, text.size() - from - 1)) : -1;
    };
    const auto span = [&](std::size_t end) {
        return from < in.size() ? static_cast<int>(std::min(end, in.size()) - from) : 0;
    };
    const std::string low = mapped(in, lowered);
    const std::string lowWhat = mapped(what, lowered);
    const std::string bothWhat = lowWhat + mapped(what, vx::uppered);
    const auto start = static_cast<int>(from);
    const VxString s = made(in);
    const VxString w = made(what);
    return {{s.find(w, start), find(in, what)},
            {s.findC(w, start), find(low, lowWhat)},
            {s.find(byte, start, 0), find(in, {byte})},
            {s.findC(byte, start, 0), find(low, {lowered(byte)})},
            {s.find(byte, start, -2), findLast(in, byte)},
            {s.findC(byte, start, 1), findLast(low, lowered(byte))},
            {s.findInSet(w, start), span(in.find_first_not_of(what, from))},
            {s.findNotInSet(w, start), span(in.find_first_of(what, from))},
            {s.findInSetC(w, start), span(in.find_first_not_of(bothWhat, from))},
            {s.findNotInSetC(w, start), span(in.find_first_of(bothWhat, from))}};
}

#endif
