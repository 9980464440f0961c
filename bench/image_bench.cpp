// Images: rows in and out and the row codec, beside their peers.

#include <vximage.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#ifdef VX_WITH_OPENIMAGEIO
#include <OpenImageIO/imageio.h>
#endif

namespace {

constexpr int kSize = 2048;
using Row = std::vector<uint16_t>;

enum Picture { kNoise, kFlat, kType };
const char *const kPictureNames[] = {"noise", "flat", "type"};

// A line of a picture. Small type: strokes one or two elements wide on white, in lines of text.
Row lineOf(Picture picture, int y, unsigned most) {
    std::mt19937 random(static_cast<unsigned>(y));
    Row row(kSize, static_cast<uint16_t>(picture == kFlat ? 77 : most));
    for (std::size_t x = 0; x < row.size() && picture != kFlat; ++x) {
        if (picture == kNoise) {
            row[x] = static_cast<uint16_t>(random() & most);
        } else if (y % 16 < 10) {
            const std::size_t stroke = 1 + random() % 2;
            for (std::size_t i = 0; i < stroke && x < row.size(); ++i) {
                row[x++] = static_cast<uint16_t>(random() % (most / 3));
            }
            x += random() % 6;
        }
    }
    return row;
}

// A file of a picture in published byte order, written once and removed at the end.
class File {
public:
    File(Picture picture, unsigned type, bool published) {
        path_ = std::filesystem::temp_directory_path() /
                ("vxbench" + std::to_string(::getpid()) + ".sgi");
        std::filesystem::remove(path_);
        VxImage *image =
            vxImageOpen(path_.c_str(), "w", type, 2U, unsigned{kSize}, unsigned{kSize});
        if (published) vxImageUseBigEndian(image);
        for (int y = 0; y < kSize; ++y) {
            vxImagePutRow(image, lineOf(picture, y, (type & 0xFF) == 1 ? 0xFF : 0xFFFF).data(), y,
                          0);
        }
        vxImageClose(image);
    }
    ~File() { std::filesystem::remove(path_); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    const char *path() const { return path_.c_str(); }

private:
    std::string path_;
};

void countElements(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * kSize * kSize);
}

// ---- Rows in

void rowsIn(benchmark::State &state, Picture picture, unsigned type, bool published) {
    const File file(picture, type, published);
    Row row(kSize);
    for (auto _ : state) {
        VxImage *image = vxImageOpen(file.path(), "r");
        for (int y = 0; y < kSize; ++y)
            vxImageGetRow(image, row.data(), y, 0);
        benchmark::DoNotOptimize(row.data());
        vxImageClose(image);
    }
    countElements(state);
}

// The plainest way to have the same verbatim rows: read one, widen or swap it.
void plainRowsIn(benchmark::State &state, unsigned type, bool published) {
    const File file(kNoise, type, published);
    Row row(kSize);
    std::vector<uint8_t> bytes(kSize);
    for (auto _ : state) {
        const int descriptor = ::open(file.path(), O_RDONLY);
        for (long y = 0; y < kSize; ++y) {
            if ((type & 0xFF) == 1) {
                if (::pread(descriptor, bytes.data(), kSize, 512 + y * kSize) != kSize) return;
                for (std::size_t x = 0; x < kSize; ++x)
                    row[x] = bytes[x];
            } else {
                if (::pread(descriptor, row.data(), 2 * kSize, 512 + y * 2 * kSize) < 0) return;
                for (std::size_t x = 0; x < kSize && published; ++x) {
                    row[x] = static_cast<uint16_t>(row[x] << 8 | row[x] >> 8);
                }
            }
            benchmark::DoNotOptimize(row.data());
            benchmark::ClobberMemory();
        }
        ::close(descriptor);
    }
    countElements(state);
}

#ifdef VX_WITH_OPENIMAGEIO
void peerRowsIn(benchmark::State &state, Picture picture, unsigned type, bool native) {
    const File file(picture, type, true);
    std::vector<uint16_t> pixels(std::size_t{kSize} * kSize);
    for (auto _ : state) {
        auto input = OIIO::ImageInput::open(file.path());
        if (!input || !input->read_image(0, 0, 0, 1,
                                         native ? OIIO::TypeDesc(OIIO::TypeDesc::UNKNOWN)
                                                : OIIO::TypeDesc(OIIO::TypeDesc::UINT16),
                                         pixels.data())) {
            state.SkipWithError("cannot read");
            return;
        }
        benchmark::DoNotOptimize(pixels.data());
    }
    countElements(state);
}
#endif

// ---- Rows out

void rowsOut(benchmark::State &state, unsigned type, bool published) {
    const File file(kNoise, type, published);
    Row row = lineOf(kNoise, 1, (type & 0xFF) == 1 ? 0xFF : 0xFFFF);
    VxImage *image = vxImageOpen(file.path(), "w", type, 2U, unsigned{kSize}, unsigned{kSize});
    if (published) vxImageUseBigEndian(image);
    const auto putAll = [&] {
        for (int y = 0; y < kSize; ++y)
            vxImagePutRow(image, row.data(), y, 0);
    };
    putAll();  // opening has cut the file off; the peer, too, writes over rows that are there
    for (auto _ : state)
        putAll();
    vxImageClose(image);
    countElements(state);
}

void plainRowsOut(benchmark::State &state, unsigned type) {
    const File file(kNoise, type, false);
    const Row row = lineOf(kNoise, 1, 0xFFFF);
    const long bytes = kSize * static_cast<long>(type & 0xFF);
    const int descriptor = ::open(file.path(), O_WRONLY);
    for (auto _ : state) {
        for (long y = 0; y < kSize; ++y) {
            if (::pwrite(descriptor, row.data(), static_cast<std::size_t>(bytes), 512 + y * bytes) <
                0) {
                return;
            }
        }
    }
    ::close(descriptor);
    countElements(state);
}

// ---- The codec

void encodeRow(benchmark::State &state, Picture picture, int width) {
    const Row row = lineOf(picture, 1, width == 1 ? 0xFF : 0xFFFF);
    std::vector<uint16_t> out(2 * kSize + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(vxImageRleEncode(row.data(), 2, out.data(), width, kSize));
    }
    state.SetItemsProcessed(state.iterations() * kSize);
}

void plainScan(benchmark::State &state) {
    const Row row = lineOf(kNoise, 1, 0xFFFF);
    for (auto _ : state) {
        std::size_t at = 2;
        while (at < row.size() && !(row[at - 2] == row[at - 1] && row[at - 1] == row[at]))
            ++at;
        benchmark::DoNotOptimize(at);
    }
    state.SetItemsProcessed(state.iterations() * kSize);
}

const bool registered = [] {
    using benchmark::RegisterBenchmark;
    for (const unsigned type : {1U, 2U}) {
        for (const bool published : {false, true}) {
            if (type == 1 && !published) continue;
            const std::string name = std::to_string(type) + (published ? "/published" : "/host");
            RegisterBenchmark(("verbatim_in/" + name + "/vxutil").c_str(), rowsIn, kNoise, type,
                              published);
            RegisterBenchmark(("verbatim_in/" + name + "/plain").c_str(), plainRowsIn, type,
                              published);
            RegisterBenchmark(("verbatim_out/" + name + "/vxutil").c_str(), rowsOut, type,
                              published);
        }
        RegisterBenchmark(("verbatim_out/" + std::to_string(type) + "/plain").c_str(), plainRowsOut,
                          type);
#ifdef VX_WITH_OPENIMAGEIO
        RegisterBenchmark(("verbatim_in/" + std::to_string(type) + "/openimageio").c_str(),
                          peerRowsIn, kNoise, type, false);
#endif
        for (const Picture picture : {kNoise, kFlat, kType}) {
            const std::string name = std::to_string(type) + "/" + kPictureNames[picture];
            RegisterBenchmark(("run_length_in/" + name + "/vxutil").c_str(), rowsIn, picture,
                              0x100 + type, true);
#ifdef VX_WITH_OPENIMAGEIO
            RegisterBenchmark(("run_length_in/" + name + "/openimageio").c_str(), peerRowsIn,
                              picture, 0x100 + type, true);
#endif
            RegisterBenchmark(("encode/" + name + "/vxutil").c_str(), encodeRow, picture,
                              static_cast<int>(type));
        }
    }
    RegisterBenchmark("encode/plain_scan", plainScan);
    return true;
}();

}  // namespace
