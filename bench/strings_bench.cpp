// The string beside std::string and the C library's own searches.

#include <vxstring.h>

#include <benchmark/benchmark.h>
#include <cctype>
#include <cstring>
#include <string>
#include <strings.h>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr int kLong = 4096;

void countBytes(State &state, int each) {
    state.SetBytesProcessed(state.iterations() * each);
}

// Text of words in which the last bytes alone are what the searches look for.
std::string words() {
    std::string text;
    while (text.size() < kLong)
        text += "the quick brown fox jumps over a lazy dog ";
    text.resize(kLong - 6);
    return text + "Needle";
}

// ---- Copies and appends -----------------------------------------------------------------------

void copy_vx(State &state) {
    const VxString text(std::string(static_cast<std::size_t>(state.range(0)), 'x').c_str());
    for (auto _ : state) {
        VxString copy(text);
        DoNotOptimize(copy);
    }
}

void copy_std(State &state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        std::string copy(text);
        DoNotOptimize(copy);
    }
}

BENCHMARK(copy_vx)->Arg(64)->Arg(4096);
BENCHMARK(copy_std)->Arg(64)->Arg(4096);

constexpr int kAppends = 1000;

void append_vx(State &state) {
    const VxString piece(std::string(static_cast<std::size_t>(state.range(0)), 'x').c_str());
    for (auto _ : state) {
        VxString text;
        text.setLengthHint(kAppends * piece.length());
        for (int i = 0; i < kAppends; ++i)
            text += piece;
        DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}

void append_std(State &state) {
    const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        std::string text;
        text.reserve(kAppends * piece.size());
        for (int i = 0; i < kAppends; ++i)
            text += piece;
        DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}

BENCHMARK(append_vx)->Arg(1)->Arg(8);
BENCHMARK(append_std)->Arg(1)->Arg(8);

// ---- Searches ---------------------------------------------------------------------------------

void find_vx(State &state) {
    const VxString text(words().c_str());
    const VxString pattern("Needle");
    for (auto _ : state)
        DoNotOptimize(text.find(pattern, 0));
    countBytes(state, kLong);
}

void find_memmem(State &state) {
    const std::string text = words();
    for (auto _ : state)
        DoNotOptimize(memmem(text.data(), text.size(), "Needle", 6));
    countBytes(state, kLong);
}

// What the searches that ignore case look for: the word at the end, or a pattern of so many bytes
// that differs from the text in its last byte only, wherever the words begin again.
std::string folded(const State &state) {
    std::string pattern = "Needle";
    if (state.range(0) != std::ssize(pattern)) {
        pattern = words().substr(0, static_cast<std::size_t>(state.range(0)));
        pattern.back() = pattern.back() == 'e' ? 'o' : 'e';
    }
    for (char &byte : pattern)
        byte = static_cast<char>(std::isupper(byte) != 0 ? std::tolower(byte) : std::toupper(byte));
    return pattern;
}

void find_folded_vx(State &state) {
    const VxString text(words().c_str());
    const VxString pattern(folded(state).c_str());
    for (auto _ : state)
        DoNotOptimize(text.findC(pattern, 0));
    countBytes(state, kLong);
}

void find_folded_strcasestr(State &state) {
    const std::string text = words();
    const std::string pattern = folded(state);
    for (auto _ : state)
        DoNotOptimize(strcasestr(text.c_str(), pattern.c_str()));
    countBytes(state, kLong);
}

void span_vx(State &state) {
    const std::string text = words();
    const VxString string(text.c_str());
    const VxString set("abcdefghijklmnopqrstuvwxyz ");
    for (auto _ : state)
        DoNotOptimize(string.findInSet(set, 0));
    countBytes(state, kLong);
}

void span_not_vx(State &state) {
    const VxString string(words().c_str());
    const VxString set("ABCDEFGHIJKLMNOPQRSTUVWXYZ;");
    for (auto _ : state)
        DoNotOptimize(string.findNotInSet(set, 0));
    countBytes(state, kLong);
}

void span_std(State &state) {
    const std::string text = words();
    for (auto _ : state)
        DoNotOptimize(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz "));
    countBytes(state, kLong);
}

BENCHMARK(find_vx);
BENCHMARK(find_memmem);
BENCHMARK(find_folded_vx)->Arg(6)->Arg(513)->Arg(2000);
BENCHMARK(find_folded_strcasestr)->Arg(6)->Arg(513)->Arg(2000);
BENCHMARK(span_vx);
BENCHMARK(span_not_vx);
BENCHMARK(span_std);

// ---- Comparisons ------------------------------------------------------------------------------

// Two long texts, equal (0) or different in their last byte (1).
struct Pair {
    explicit Pair(const State &state) : one(words()), other(words()) {
        if (state.range(0) != 0) other.back() = 'f';
    }
    std::string one;
    std::string other;
};

void equal_vx(State &state) {
    const Pair pair(state);
    const VxString one(pair.one.c_str());
    const VxString other(pair.other.c_str());
    for (auto _ : state)
        DoNotOptimize(one == other);
    countBytes(state, kLong);
}

void order_vx(State &state) {
    const Pair pair(state);
    const VxString one(pair.one.c_str());
    const VxString other(pair.other.c_str());
    for (auto _ : state)
        DoNotOptimize(one.compare(other));
    countBytes(state, kLong);
}

// On the strings' own text, since the time depends on how the two are aligned.
void order_memcmp(State &state) {
    const Pair pair(state);
    const VxString one(pair.one.c_str());
    const VxString other(pair.other.c_str());
    for (auto _ : state) {
        DoNotOptimize(
            std::memcmp(static_cast<const char *>(one), static_cast<const char *>(other), kLong));
    }
    countBytes(state, kLong);
}

void order_folded_vx(State &state) {
    const Pair pair(state);
    const VxString one(pair.one.c_str());
    const VxString other(pair.other.c_str());
    for (auto _ : state)
        DoNotOptimize(one.compareC(other));
    countBytes(state, kLong);
}

void order_folded_strcasecmp(State &state) {
    const Pair pair(state);
    for (auto _ : state)
        DoNotOptimize(strcasecmp(pair.one.c_str(), pair.other.c_str()));
    countBytes(state, kLong);
}

BENCHMARK(equal_vx)->Arg(0)->Arg(1);
BENCHMARK(order_vx)->Arg(0)->Arg(1);
BENCHMARK(order_memcmp)->Arg(0)->Arg(1);
BENCHMARK(order_folded_vx)->Arg(0)->Arg(1);
BENCHMARK(order_folded_strcasecmp)->Arg(0)->Arg(1);

}  // namespace
