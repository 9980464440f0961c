// Lines and pinned streams, beside the calls that they stand on.

#include <vxtext.h>

#include <benchmark/benchmark.h>
#include <clocale>
#include <cstdio>

#if defined(VX_WITH_GLIB)
#include <glib.h>
#endif

namespace {

// ---- Lines of a photometric web file

constexpr int kLines = 1000;

using Reader = char *(char *buffer, int size, FILE *file);

void measure(benchmark::State &state, Reader *read) {
    FILE *file = std::tmpfile();
    for (int i = 0; i < kLines; ++i)
        std::fprintf(file, "  %d.5 1203.25 1187.0 1102.75 998.5 871.25 725.0 566.5 \r\n", i);
    char buffer[256];
    for (auto _ : state) {
        std::rewind(file);
        while (read(buffer, static_cast<int>(sizeof buffer), file) != nullptr)
            benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
    std::fclose(file);
}

void line(benchmark::State &state, Reader *read) {
    measure(state, read);
}

void trimmed(benchmark::State &state, Reader *read) {
    measure(state, read);
}

BENCHMARK_CAPTURE(line, vxutil, vxReadLine);
BENCHMARK_CAPTURE(line, fgets, std::fgets);
BENCHMARK_CAPTURE(trimmed, vxutil, vxReadTrimmedLine);

#if defined(VX_WITH_GLIB)
char *readStripped(char *buffer, int size, FILE *file) {
    char *text = std::fgets(buffer, size, file);
    return text != nullptr ? g_strstrip(text) : nullptr;
}
BENCHMARK_CAPTURE(trimmed, fgets_and_glib, readStripped);
#endif

// ---- Pinned streams, where the user's locale is the "C" that they want and where it is another

constexpr char kFile[] = "/etc/passwd";

void stream(benchmark::State &state, const char *locale) {
    if (std::setlocale(LC_NUMERIC, locale) == nullptr) state.SkipWithError("no such locale");
    for (auto _ : state)
        vxStreamClose(vxStreamOpen(kFile, "r"));
    std::setlocale(LC_NUMERIC, "C");
}

void bareStream(benchmark::State &state) {
    for (auto _ : state)
        std::fclose(std::fopen(kFile, "r"));
}

BENCHMARK_CAPTURE(stream, vxutil, "C");
BENCHMARK_CAPTURE(stream, vxutil_decimal_comma, "de_DE.UTF-8");
BENCHMARK(bareStream)->Name("stream/fopen");

}  // namespace
