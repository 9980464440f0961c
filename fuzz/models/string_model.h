// Strings compared with those of the standard library: runs of changes, searches and comparisons.

#ifndef VX_FUZZ_MODELS_STRING_MODEL_H
#define VX_FUZZ_MODELS_STRING_MODEL_H

#include <vxstring.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
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

// The bytes that fit into a body, which no member reports.
inline std::size_t capacity(const VxString &string) {
    struct Body {
        char *data;
        int length, capacity;
    };
    const Body *rep = nullptr;
    std::memcpy(&rep, static_cast<const void *>(&string), sizeof rep);
    return static_cast<std::size_t>(rep->capacity);
}

// A private member that detaches. The library exports it, so other programs can call it.
void makeUnique(VxString *string) __asm__("_ZN8VxString10makeUniqueEv");

// A text over and over again, up to a length.
inline std::string repeated(const std::string &text, std::size_t length) {
    std::string result;
    while (!text.empty() && result.size() < length)
        result += text;
    return result.substr(0, length);
}

inline std::string lower(std::string text) {
    for (char &byte : text)
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    return text;
}

inline std::string upper(std::string text) {
    for (char &byte : text)
        if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
    return text;
}

// Every operation that changes text, on strings that share bodies at random. The model has a
// counted pointer to a body in the place of each string.
class StringModel {
public:
    StringModel() {
        for (SharedBody &each : bodies_)
            each = bodyOf("");
    }

    // One change. below(n) chooses a number from 0 to n - 1.
    template <typename Below>
    void change(Below &below) {
        const int i = below(kStrings);
        const int j = below(kStrings);
        if (strings_[i].length() <= kLong && below(2) == 0) {
            join(i, j, below);
        } else {
            edit(i, j, below);
        }
    }

    // How the strings differ from their models; empty if they do not.
    std::string difference() const {
        for (int k = 0; k < kStrings; ++k) {
            const VxString &s = strings_[k];
            const Body &b = *bodies_[k];
            if (vxStringView(s) != b.text || capacity(s) != b.capacity)
                return described(text(s), capacity(s)) + ", not " + described(b.text, b.capacity);
            if (s[s.length()] != '\0') return "a lost terminator";
            if (ends_.size() > 1) return "several bytes at the ends of strings";
            if (!refersToText_) return "a reference to another byte";
            for (int other = 0; other < k; ++other) {
                const bool shares = body(s) == body(strings_[other]);
                if (shares != (bodies_[k] == bodies_[other]))
                    return shares ? "a body that is shared" : "a body that is not shared";
            }
        }
        return "";
    }

    const std::string &model(int k) const { return bodies_[k]->text; }

private:
    static constexpr int kStrings = 6;
    static constexpr int kLong = 200;  // longer texts are cut next
    static constexpr VxString::MemoryHint kHints[] = {VxString::kExactRoom, VxString::kDoubleRoom,
                                                      static_cast<VxString::MemoryHint>(-1)};

    struct Body {
        std::string text;
        std::size_t capacity = text.size();
        bool doubles = false;
    };
    using SharedBody = std::shared_ptr<Body>;

    static SharedBody bodyOf(const std::string &text) { return std::make_shared<Body>(Body{text}); }

    static void detach(SharedBody &body) {
        if (body.use_count() > 1) body = bodyOf(body->text);
    }

    static void put(SharedBody &body, const std::string &text) {
        if (text.size() > body->capacity) body->capacity = text.size() * (body->doubles ? 2 : 1);
        body->text = text;
    }

    static void append(SharedBody &body, const std::string &added) {
        if (added.empty()) return;
        const std::string sum = body->text + added;
        if (body.use_count() > 1) body = std::make_shared<Body>(Body{"", 0, body->doubles});
        put(body, sum);
    }

    static std::string described(const std::string &text, std::size_t capacity) {
        return "'" + text + "' of capacity " + std::to_string(capacity);
    }

    // Sharing and growing.
    template <typename Below>
    void join(int i, int j, Below &below) {
        VxString &s = strings_[i];
        SharedBody &b = bodies_[i];
        const int action = below(5);
        if (action == 0) {
            s = strings_[j];
            b = bodies_[j];
        } else if (action == 1) {
            s += strings_[j];
            append(b, bodies_[j]->text);
        } else if (action == 2) {
            const std::string piece = below(4) == 0 ? "" : std::string(1, byteOf(below));
            s = strings_[j] + made(piece);
            SharedBody sum = bodies_[j];
            append(sum, piece);
            b = sum;
        } else if (action == 3) {
            const int hint = below(3);
            s.setMemoryHint(kHints[hint]);
            b->doubles = hint != 0;
        } else {
            const int n = s.length() + below(20) - 5;
            s.setLengthHint(n);
            if (n <= std::ssize(b->text)) return;
            b = bodyOf(b->text);
            b->capacity = static_cast<std::size_t>(n);
        }
    }

    // Changes to text, all of which detach.
    template <typename Below>
    void edit(int i, int j, Below &below) {
        VxString &s = strings_[i];
        SharedBody &b = bodies_[i];
        const int n = s.length();
        const int start = below(n + 1);
        const int count = below(n - start + 1);
        const auto at = static_cast<std::size_t>(start);
        const auto many = static_cast<std::size_t>(count);
        const int action = n > kLong ? 0 : below(7);
        detach(b);
        if (action == 0) {
            const bool deletes = n > kLong || i == j;
            s.set(start, count, deletes ? VxString() : strings_[j]);
            put(b, std::string(b->text).replace(at, many, deletes ? "" : bodies_[j]->text));
        } else if (action == 1) {
            s = count == n - start ? s.get(start) : s.get(start, count);
            b = bodyOf(b->text.substr(at, many));
        } else if (action == 2) {
            s.toLower();
            b->text = lower(b->text);
        } else if (action == 3) {
            s.toUpper();
            b->text = upper(b->text);
        } else if (action == 4) {
            strings_[j] = VxString(s[start]);
            bodies_[j] = bodyOf({b->text.c_str()[at]});
        } else if (action == 5) {
            makeUnique(&s);
        } else {
            const char byte = byteOf(below);
            char &target = s[start];
            refersToText_ = refersToText_ && target == b->text.c_str()[at];
            target = byte;
            if (start < n) b->text[at] = byte;
            if (start == n) ends_.insert(&target);
        }
    }

    template <typename Below>
    static char byteOf(Below &below) {
        return static_cast<char>(below(256));
    }

    VxString strings_[kStrings];
    SharedBody bodies_[kStrings];
    std::set<const char *> ends_;  // the bytes that [] referred to at the length of a string
    bool refersToText_ = true;     // whether [] always referred to the byte at its index
};

inline std::string written(std::int64_t number) {
    return " " + std::to_string(number);
}

inline std::string written(const std::vector<int> &numbers) {
    std::string all;
    for (const int number : numbers)
        all += written(number);
    return all;
}

// The results that are not as expected; empty if all are.
template <typename Result>
std::string differences(const std::vector<std::pair<Result, Result>> &results) {
    std::string all;
    for (std::size_t i = 0; i < results.size(); ++i) {
        const auto &[found, expected] = results[i];
        if (found == expected) continue;
        all += "result " + std::to_string(i) + ":" + written(found) + ", not" + written(expected);
    }
    return all;
}

// How the searches differ from those of std::string, whose npos is -1 as an int.
inline std::string searchDifference(const std::string &in, const std::string &what, char byte,
                                    std::size_t from) {
    const auto find = [&](const std::string &text, const std::string &pattern) {
        return static_cast<int>(text.find(pattern.empty() ? std::string(1, '\0') : pattern, from));
    };
    const auto findLast = [&](const std::string &text, const std::string &last) {
        if (from >= text.size()) return -1;
        return static_cast<int>(text.rfind(last, text.size() - from - 1));
    };
    const auto span = [&](std::size_t end) {
        return from < in.size() ? static_cast<int>(std::min(end, in.size()) - from) : 0;
    };
    const std::string low = lower(in);
    const std::string bothWhat = lower(what) + upper(what);
    const auto start = static_cast<int>(from);
    const VxString s = made(in);
    const VxString w = made(what);
    return differences<int>({{s.find(w, start), find(in, what)},
                             {s.findC(w, start), find(low, lower(what))},
                             {s.find(byte, start, 0), find(in, {byte})},
                             {s.findC(byte, start, 0), find(low, lower({byte}))},
                             {s.find(byte, start, -2), findLast(in, {byte})},
                             {s.findC(byte, start, 1), findLast(low, lower({byte}))},
                             {s.findInSet(w, start), span(in.find_first_not_of(what, from))},
                             {s.findNotInSet(w, start), span(in.find_first_of(what, from))},
                             {s.findInSetC(w, start), span(in.find_first_not_of(bothWhat, from))},
                             {s.findNotInSetC(w, start), span(in.find_first_of(bothWhat, from))}});
}

// The difference of the first two bytes that differ, including the NUL after each text.
inline int order(const std::string &one, const std::string &other) {
    for (std::size_t i = 0;; ++i) {
        const int left = static_cast<signed char>(one.c_str()[i]);
        const int right = static_cast<signed char>(other.c_str()[i]);
        if (left != right || i == one.size() || i == other.size()) return left - right;
    }
}

// The results of all operators, and what they are by two orders of the values: that of the named
// ones, and the total one.
template <typename Left, typename Right>
std::vector<int> relations(const Left &one, const Right &other) {
    const auto both = one <=> other;
    return {one<other, one <= other, one> other, one >= other, one == other, one != other,
            both<0, both> 0};
}

inline std::vector<int> relationsBy(int named, int total) {
    return {named<0, named <= 0, named> 0, named >= 0, total == 0, total != 0, total<0, total> 0};
}

struct NamedValue {
    VxString name;
    int value;
    auto operator<=>(const NamedValue &) const = default;
};

// How the comparisons differ from the order of bytes. Pairs, vectors and structures keep apart what
// compare does not.
inline std::string comparisonDifference(const std::string &one, const std::string &other) {
    const VxString s = made(one);
    const VxString t = made(other);
    const VxString cut(body(t));
    const int sign = order(one, other);
    const int total =
        sign != 0 ? sign : static_cast<int>(one.size()) - static_cast<int>(other.size());
    const auto same = [](std::size_t left, std::size_t right) { return left == right ? 1 : 0; };
    const std::hash<VxString> hash;
    return differences<std::vector<int>>(
        {{{s.compare(t), s.compareC(t)}, {sign, order(lower(one), lower(other))}},
         {{s.compare(s), s.compareC(s)}, {0, 0}},
         {relations(s, t), relationsBy(sign, total)},
         {relations(t, s), relationsBy(-sign, -total)},
         {relations(s, VxString(s)), relationsBy(0, 0)},
         {relations(std::pair(s, 1), std::pair(t, 1)), relationsBy(total, total)},
         {relations(std::vector{s}, std::vector{t}), relationsBy(total, total)},
         {relations(NamedValue{s, 1}, NamedValue{t, 1}), relationsBy(total, total)},
         {relations(s, body(t)), relations(s, cut)},
         {relations(body(t), s), relations(cut, s)},
         {{VxStringLess()(s, t), same(hash(s), hash(t))}, {total < 0, one == other}}});
}

// How the numbers at an index differ from those that the C library reads, bit by bit.
inline std::string numberDifference(const std::string &text, int start) {
    const VxString s = made(text);
    const VxString rest = s.get(start);
    int intEnd = -1;
    int realEnd = -1;
    const int found = s.getInt(start, intEnd);
    const double foundReal = s.getDouble(start, realEnd);

    const auto bits = [](double real) { return std::bit_cast<std::int64_t>(real); };
    char *stop = nullptr;
    char *realStop = nullptr;
    const std::int64_t number =
        std::clamp<long>(std::strtol(text.c_str() + start, &stop, 10), INT_MIN, INT_MAX);
    const std::int64_t real = bits(std::strtod(text.c_str() + start, &realStop));
    return differences<std::int64_t>({{found, number},
                                      {intEnd, stop - text.c_str()},
                                      {bits(foundReal), real},
                                      {realEnd, realStop - text.c_str()},
                                      {s.getInt(start), number},
                                      {bits(s.getDouble(start)), real},
                                      {static_cast<int>(rest), number},
                                      {bits(static_cast<double>(rest)), real}});
}

#endif
