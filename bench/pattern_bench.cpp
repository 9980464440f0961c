// Matching wildcards, beside fnmatch, RE2 and GLib's patterns.

#include <vxpattern.h>

#include <benchmark/benchmark.h>
#include <clocale>
#include <fnmatch.h>
#include <string>

#if defined(VX_WITH_RE2)
#include <re2/re2.h>
#endif
#if defined(VX_WITH_GLIB)
#include <glib.h>
#endif

namespace {

struct Case {
    const char *name, *wildcard, *regex;
    bool isGlob;  // without lists, as GLib takes it
    std::string subject;
};

void vxutil(benchmark::State &state, const Case &test) {
    char form[VX_PATTERN_SIZE];
    if (vxCompileWildcard(test.wildcard, form) == 0) state.SkipWithError("refused");
    for (auto _ : state)
        benchmark::DoNotOptimize(vxMatchPattern(test.subject.c_str(), form));
}

void fnmatchPeer(benchmark::State &state, const Case &test) {
    for (auto _ : state)
        benchmark::DoNotOptimize(::fnmatch(test.wildcard, test.subject.c_str(), 0));
}

#if defined(VX_WITH_RE2)
void re2Peer(benchmark::State &state, const Case &test) {
    RE2::Options options;
    options.set_encoding(RE2::Options::EncodingLatin1);
    const RE2 regex(test.regex, options);
    for (auto _ : state)
        benchmark::DoNotOptimize(RE2::FullMatch(test.subject.c_str(), regex));
}
#endif

#if defined(VX_WITH_GLIB)
void glibPeer(benchmark::State &state, const Case &test) {
    GPatternSpec *pattern = g_pattern_spec_new(test.wildcard);
    for (auto _ : state)
        benchmark::DoNotOptimize(g_pattern_spec_match_string(pattern, test.subject.c_str()));
    g_pattern_spec_free(pattern);
}
#endif

// The most work that there is for a pattern of this library: as many sets as fit into one, on the
// longest subject. A double-byte page, where there is one, takes more of it.
void worst(benchmark::State &state, const char *element, const char *locale) {
    if (std::setlocale(LC_CTYPE, locale) == nullptr) state.SkipWithError("no such locale");
    std::string wildcard;
    char form[VX_PATTERN_SIZE];
    while (vxCompileWildcard((wildcard + element).c_str(), form) != 0)
        wildcard += element;
    vxCompileWildcard(wildcard.c_str(), form);
    const std::string subject(510, 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(vxMatchPattern(subject.c_str(), form));
    std::setlocale(LC_CTYPE, "C");
}

const Case kCases[] = {
    {"suffix_hit", "*.sgi", ".*\\.sgi", true, "oak_floor_diffuse.sgi"},
    {"suffix_miss", "*.sgi", ".*\\.sgi", true, "oak_floor_diffuse.tif"},
    {"words_hit", "*wood*plank*diffuse*", ".*wood.*plank.*diffuse.*", true,
     "oak_wood_dark_plank_diffuse_2k.sgi"},
    {"words_miss", "*wood*plank*diffuse*", ".*wood.*plank.*diffuse.*", true,
     "oak_wood_dark_plank_normals_2k.sgi"},
    {"list_hit", "[a-z]*[0-9].sgi", "[a-z].*[0-9]\\.sgi", false, "oak_floor_diffuse_12.sgi"},
    {"list_miss", "[a-z]*[0-9].sgi", "[a-z].*[0-9]\\.sgi", false, "oak_floor_diffuse_ab.sgi"},
    {"aaa_32", "*a*a*a*bc", ".*a.*a.*a.*bc", true, std::string(32, 'a')},
    {"aaa_402", "*a*a*a*bc", ".*a.*a.*a.*bc", true, std::string(402, 'a')},
};

const int registered = [] {
    for (const Case &test : kCases) {
        const std::string name = test.name;
        benchmark::RegisterBenchmark((name + "/vxutil").c_str(), vxutil, test);
        // On the last one, trying one way after the other takes too long to wait for.
        if (name != "aaa_402") {
            benchmark::RegisterBenchmark((name + "/fnmatch").c_str(), fnmatchPeer, test);
        }
#if defined(VX_WITH_RE2)
        benchmark::RegisterBenchmark((name + "/re2").c_str(), re2Peer, test);
#endif
#if defined(VX_WITH_GLIB)
        if (test.isGlob) benchmark::RegisterBenchmark((name + "/glib").c_str(), glibPeer, test);
#endif
    }
    for (const char *element : {"*a", "*[~b-z]"}) {
        for (const char *locale : {"C", "ja_JP.SJIS"}) {
            const std::string name = std::string("worst/") + element + "/" + locale;
            benchmark::RegisterBenchmark(name.c_str(), worst, element, locale);
        }
    }
    return 0;
}();

}  // namespace
