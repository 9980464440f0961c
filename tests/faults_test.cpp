// Every call that images and search paths make of the system fails once, or from then on: results
// as documented, nothing lost, nothing leaked, and the object still good. And what they call when
// nothing fails: how often.

#include "faults.h"

#include "platform/lock.h"
#include "scratch_folder.h"
#include "searchpath/path_store.h"
#include "text/pinned_streams.h"

#include <vxframework.h>
#include <vxhandles.h>

#include <algorithm>
#include <clocale>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Stands in front of the framework's: keeps the numbers of what was reported.
static std::vector<int> messages;
static std::set<int> everReported;

const char *vxMessageFormat(va_list, const char *, int id) {
    messages.push_back(id);
    everReported.insert(id);
    return "";
}

int vxMessageReport(const char *, int, int, ...) {
    return 0;
}

namespace {

using faults::Effect;

class Faults : public testing::Test, protected ScratchFolder {
protected:
    Faults() {
        ::setenv("VX_REGISTRY_DIR", path.c_str(), 1);
        messages.clear();
        everReported.clear();
    }

    template <typename... More>
    static void failEach(
        unsigned kinds, const std::function<void(bool once)> &trial,
        const std::function<void()> &prepare = [] {}, More... more) {
        const auto prepareAll = [&] {
            messages.clear();
            prepare();
        };
        faults::failEach(kinds, trial, prepareAll, more...);
    }

    const std::string file_ = at("a.sgi");
};

// ---- Images

constexpr int kWidth = 20, kRows = 4;
using Row = std::vector<std::uint16_t>;

Row rowOf(int y) {
    Row row(kWidth, static_cast<std::uint16_t>(y));
    for (std::size_t i = 0; i < 10; ++i)
        row[i] = static_cast<std::uint16_t>(i * 20);
    return row;
}

class ImageFaults : public Faults, public testing::WithParamInterface<unsigned> {
protected:
    VxImage *create() const {
        VxImage *image = vxImageOpen(file_.c_str(), "w", GetParam() & 0xFFFU, 2U, unsigned{kWidth},
                                     unsigned{kRows});
        if (image != nullptr && (GetParam() & 0x8000U) != 0) vxImageUseBigEndian(image);
        return image;
    }
    VxImage *open() const { return vxImageOpen(file_.c_str(), "r"); }
    static bool isRunLength() { return (GetParam() & 0x100U) != 0; }
    void writeAll() const {
        VxImage *image = create();
        for (int y = 0; y < kRows; ++y)
            vxImagePutRow(image, rowOf(y).data(), y, 0);
        EXPECT_EQ(vxImageClose(image), 0);
    }
    void expectWhole() const {
        const VxPicture picture = vxPictureRead(file_.c_str()).value();
        for (int y = 0; y < kRows; ++y)
            EXPECT_EQ(Row(picture.row(y, 0), picture.row(y, 0) + kWidth), rowOf(y));
    }
};

INSTANTIATE_TEST_SUITE_P(Storages, ImageFaults,
                         testing::Values(0x001U, 0x002U, 0x101U, 0x102U, 0x8002U, 0x8102U));

TEST_P(ImageFaults, WritingCanBeTakenUpAgain) {
    failEach(faults::kAll, [&](bool once) {
        VxImage *image = create();
        if (image == nullptr) {
            ASSERT_GE(messages.size(), 1U);
            faults::disarm();
            if (once) writeAll();
            return;
        }
        for (int y = 0; y < kRows; ++y) {
            Row row = rowOf(y);
            const bool put = vxImagePutRow(image, row.data(), y, 0) == kWidth;
            EXPECT_EQ(image->maxValue, 180U);  // also when the row failed
            EXPECT_TRUE(put || !once || vxImagePutRow(image, row.data(), y, 0) == kWidth);
            EXPECT_EQ(row, rowOf(y));
        }
        messages.clear();
        const int flushed = vxImageFlush(image);
        EXPECT_EQ(flushed, messages.empty() ? 0 : -1);
        messages.clear();
        bool closed = vxImageClose(image) == 0;
        const bool gone = !messages.empty() && messages.back() == VX_MESSAGE_IMAGE_CLOSE_FAILED;
        if (!closed && !gone) {  // the handle waits for another try
            faults::disarm();
            closed = vxImageClose(image) == 0;
            EXPECT_TRUE(closed);
        }
        faults::disarm();
        if (once) expectWhole();
    });
    std::set<int> all = {VX_MESSAGE_IMAGE_CLOSE_HEADER_FAILED,  VX_MESSAGE_IMAGE_CLOSE_FAILED,
                         VX_MESSAGE_IMAGE_HANDLE_OUT_OF_MEMORY, VX_MESSAGE_IMAGE_CREATE_FAILED,
                         VX_MESSAGE_IMAGE_CREATE_HEADER_FAILED, VX_MESSAGE_IMAGE_ROW_OUT_OF_MEMORY,
                         VX_MESSAGE_IMAGE_ROW_WRITE_FAILED};
    if (isRunLength())
        all.insert({VX_MESSAGE_IMAGE_CLOSE_STARTS_FAILED, VX_MESSAGE_IMAGE_CLOSE_SIZES_FAILED,
                    VX_MESSAGE_IMAGE_FLUSH_STARTS_FAILED, VX_MESSAGE_IMAGE_FLUSH_SIZES_FAILED,
                    VX_MESSAGE_IMAGE_TABLES_OUT_OF_MEMORY});
    EXPECT_EQ(everReported, all);
}

TEST_P(ImageFaults, ReadingLeavesTheRowAndCanBeTakenUpAgain) {
    writeAll();
    failEach(faults::kAll, [&](bool once) {
        VxImage *image = open();
        if (image == nullptr) {
            EXPECT_TRUE(!messages.empty() || faults::count(faults::kRead) == 0);
            faults::disarm();
            if (once) expectWhole();
            return;
        }
        for (int y = 0; y < kRows; ++y) {
            Row row(kWidth, 0xABCD);
            if (vxImageGetRow(image, row.data(), y, 0) != kWidth) {
                EXPECT_EQ(row, Row(kWidth, 0xABCD));
                if (!once) continue;
                EXPECT_EQ(vxImageGetRow(image, row.data(), y, 0), kWidth);
            }
            EXPECT_EQ(row, rowOf(y));
        }
        const int result = vxImageClose(image);
        EXPECT_TRUE(result == 0 || messages.back() == VX_MESSAGE_IMAGE_CLOSE_FAILED);
    });
    std::set<int> all = {VX_MESSAGE_IMAGE_CLOSE_FAILED, VX_MESSAGE_IMAGE_HANDLE_OUT_OF_MEMORY,
                         VX_MESSAGE_IMAGE_HEADER_TRUNCATED, VX_MESSAGE_IMAGE_ROW_OUT_OF_MEMORY,
                         VX_MESSAGE_IMAGE_ROW_READ_FAILED};
    if (isRunLength())
        all.insert({VX_MESSAGE_IMAGE_TABLES_OUT_OF_MEMORY, VX_MESSAGE_IMAGE_STARTS_TRUNCATED,
                    VX_MESSAGE_IMAGE_SIZES_TRUNCATED});
    EXPECT_EQ(everReported, all);
}

// Signals cost nothing but another try. No close is made again: the descriptor is gone.
TEST_P(ImageFaults, SignalsOnlyCostAnotherTry) {
    const auto trial = [&](bool) {
        writeAll();
        expectWhole();
        EXPECT_EQ(messages, std::vector<int>());
    };
    failEach(
        faults::kOpen | faults::kRead | faults::kWrite, trial, [] {},
        std::initializer_list<Effect>{Effect::kInterrupt});
}

TEST_P(ImageFaults, StreamsReportEveryFailure) {
    writeAll();
    failEach(faults::kAll, [&](bool) {
        const VxUniqueImage image(open());
        if (image == nullptr) return;
        int rows = 0;
        while (vxImageFillPixels(image.get()) >= 0)
            ++rows;
        const bool complete = (image->flags & VX_IMAGE_EOF) != 0;
        EXPECT_TRUE(complete ? rows == kRows - 1 : faults::disarm());
        EXPECT_EQ(image->pixelsLeft, complete ? kWidth - 1 : 0);
        const bool rowFailed = !complete && image->pixelBuffer != nullptr;
        EXPECT_EQ((image->flags & VX_IMAGE_ERROR) != 0, rowFailed);
    });
    EXPECT_TRUE(everReported.contains(VX_MESSAGE_IMAGE_FILL_OUT_OF_MEMORY) &&
                everReported.contains(VX_MESSAGE_IMAGE_ROW_READ_FAILED));
    failEach(faults::kWrite | faults::kMemory, [&](bool) {
        VxImage *image = create();
        if (image == nullptr) return;
        int y = 0;
        for (; y < kRows && vxImageDrainPixels(image, 0) == 0; ++y)
            image->nextPixel = std::ranges::copy(rowOf(y), image->pixelBuffer).out;
        const int flushed = y == kRows ? vxImageFlush(image) : -1;
        const int next = flushed == 0 ? vxImageDrainPixels(image, 0) : -1;
        EXPECT_EQ(next, -1);  // there is no row for it
        EXPECT_EQ(flushed, flushed != 0 && faults::disarm() ? -1 : 0);
        faults::disarm();
        EXPECT_EQ((image->flags & VX_IMAGE_ERROR) != 0,
                  std::ranges::count(messages, VX_MESSAGE_IMAGE_ROW_WRITE_FAILED) != 0);
        EXPECT_EQ(vxImageClose(image), 0);
        if (y == kRows && flushed != 0) expectWhole();  // the last row was still pending
    });
    EXPECT_TRUE(everReported.contains(VX_MESSAGE_IMAGE_DRAIN_OUT_OF_MEMORY));
}

// In file order a row costs one call of the system, and no row an allocation.
TEST_P(ImageFaults, RowsInFileOrderTakeOneCallEach) {
    Row row = rowOf(1);
    for (const bool reading : {false, true}) {
        faults::resetCounts();
        VxImage *image = reading ? open() : create();
        int rowCalls = 0;
        for (int y = 0; y < kRows; ++y) {
            const int before = faults::count(faults::kAll);
            reading ? vxImageGetRow(image, row.data(), y, 0)
                    : vxImagePutRow(image, row.data(), y, 0);
            if (y != 0) rowCalls += faults::count(faults::kAll) - before;
        }
        EXPECT_EQ(rowCalls, kRows - 1);
        EXPECT_EQ(vxImageClose(image), 0);
        EXPECT_LE(faults::count(faults::kFiles) - kRows, reading ? 8 : 14);
    }
}

// A hostile header gets no room before its tables are known to be in the file.
TEST_F(Faults, NoRoomForTablesThatAreNotThere) {
    const std::string head("\xDA\x01\x01\x01\x03\0\x04\0\xFF\xFF\xFF\x0F\xFF\xFF", 14);
    write("a.sgi", head + std::string(600, '\0'));
    faults::resetCounts();
    EXPECT_EQ(vxImageOpen(file_.c_str(), "r"), nullptr);
    EXPECT_EQ(faults::count(faults::kMemory), 1);  // the handle
}

TEST_F(Faults, OwnersAndPicturesAreCompleteOrAbsent) {
    ASSERT_TRUE(vxPictureWrite(file_.c_str(), {2, 1, 1, 1, {7, 8}}));
    failEach(faults::kMemory | faults::kNew, [&](bool) {
        const VxUniqueSampleTable table = vxSampleTableMake(3, 1, 0, 0, 1);
        const VxUniquePool pool = vxPoolMake(16, 10);
        const bool complete = table && pool && vxPictureRead(file_.c_str());
        EXPECT_EQ(complete, !faults::disarm());
        EXPECT_TRUE(table == nullptr || table->sampleCount == 9);
        EXPECT_TRUE(pool == nullptr || vxPoolAlloc(pool.get()) != nullptr);
    });
}

// ---- Search paths

// A text that failed without memory is null, and comes with the next try.
void expectText(const std::string &text, const std::function<char *()> &make) {
    VxUniqueText made(make());
    if (made == nullptr) {
        const faults::SuspendFaults pause;
        made.reset(make());
    }
    EXPECT_STREQ(made.get(), text.c_str());
}

TEST_F(Faults, ListsStayValid) {
    write("a.sgi", "found");
    // Without a current directory the relative entry is dropped.
    const std::string relative = ";" + std::filesystem::current_path().string() + "/b";
    failEach(faults::kMemory, [&](bool) {
        const VxUniqueSearchPath owner(vxSearchPathCreate("/a;b;/c;/d;/e"));
        const VxUniqueSearchPath other(vxSearchPathCreate("/x;/c;/y"));
        if (owner == nullptr || other == nullptr) return;
        VxSearchPath *list = owner.get();
        const std::string rest = (list->count == 5 ? relative : "") + ";/c;/d;/e";
        std::string expected = vxSearchPathInsert(list, 0, "/new") != 0 ? "/new;/a" : "/a";
        expected += rest;
        vxSearchPathPrepend(list, other.get());
        if (list->entries[0] == std::string("/x")) {  // before the others, without what repeats it
            expected.erase(expected.find(";/c;"), 3);
            expected.insert(0, "/x;/c;/y;");
        }
        expectText(expected, [&] { return vxSearchPathToString(list); });
        vxSearchPathCopy(other.get(), list);
        if (other->count == 3) expected = "/x;/c;/y";
        expectText(expected, [&] { return vxSearchPathToString(other.get()); });
        while (list->count != 0)
            vxSearchPathRemove(list, 0);
        EXPECT_EQ(vxSearchPathResolve(other.get(), "missing", nullptr, 0), nullptr);
        expectText("/a/b", [] { return vxPathJoin("/a", "b", nullptr); });
        const char *found = vxFindFile(("/a;" + path.string()).c_str(), "a.sgi");
        EXPECT_TRUE(found == nullptr || file_ == found);
    });
}

TEST_F(Faults, FindingTakesOneStatusADirectoryAndOneBlock) {
    const VxUniqueSearchPath list(vxSearchPathCreate("/no/1;/no/2;/no/3;/no/4;/no/5"));
    faults::resetCounts();
    EXPECT_EQ(vxSearchPathFind(list.get(), "a.sgi", 0), nullptr);
    EXPECT_EQ(faults::count(faults::kAll), 5 + 1);
    EXPECT_EQ(faults::count(faults::kMemory), 1);
}

// ---- Settings

class SettingsFaults : public Faults {
protected:
    // A user's file as a save leaves it, and the one that a further entry makes of it.
    SettingsFaults() {
        ::unsetenv("ZOR_TEXTURE_PATH");
        ::unsetenv("ZOR_IES_PATH");
        live("/a");
        before_ = read("user.reg");
        live("/b");
        after_ = read("user.reg");
        EXPECT_NE(before_, after_);
    }
    // A life of the store in which the user's texture list gets an entry in front.
    static void live(const char *entry) {
        vx::buildPathStore();
        VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER);
        if (list != nullptr) vxSearchPathInsert(list, 0, entry);
        vxPathStoreSet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER, list);
        vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
        vx::tearDownPathStore();
    }
    void restore(const std::string &text) const {
        clear();
        write("user.reg", text);
        write("machine.reg", text);
    }
    // Neither a lock nor a damaged file is in the way of the next process.
    void expectGoodForTheNext() const {
        live("/next");
        EXPECT_NE(read("user.reg").find("\"/next\""), std::string::npos) << read("user.reg");
        EXPECT_FALSE(has("user.reg.damaged") || has("machine.reg.damaged"));
        EXPECT_NE(read("machine.reg").find("[HKEY_LOCAL_MACHINE\\"), std::string::npos);
    }

    // Each file is as it was, but for what a save changed, or else it was set aside whole.
    void expectNothingLost(const std::string &before) const {
        const std::string user = read("user.reg"), machine = read("machine.reg");
        EXPECT_TRUE(user == before || user == after_ || read("user.reg.damaged") == before) << user;
        EXPECT_TRUE(machine.starts_with(before) || read("machine.reg.damaged") == before)
            << machine;
    }

    std::string before_, after_;
};

// A damaged file is never overwritten; a good one is always good.
TEST_F(SettingsFaults, AFileIsAsBeforeOrAsAfter) {
    for (const std::string &text : {before_, before_ + "\"open"}) {
        for (const unsigned kinds : {faults::kFiles, faults::kNew, faults::kMemory}) {
            const auto trial = [&](bool once) {
                live("/b");
                faults::disarm();
                expectNothingLost(text);
                const bool hasFresh = has("user.reg.new") || has("machine.reg.new");
                EXPECT_FALSE(once && hasFresh);
                if (text == before_) expectGoodForTheNext();
            };
            failEach(kinds, trial, [&] { restore(text); });
        }
    }
}

TEST_F(SettingsFaults, ARelativeEntrySurvivesOutOfMemory) {
    std::string relative = before_;
    relative.replace(relative.find("/a"), 2, "rel");
    failEach(
        faults::kMemory,
        [&](bool) {
            live("/b");
            EXPECT_NE(read("user.reg").find("rel\""), std::string::npos);
        },
        [&] { restore(relative); });
}

TEST_F(SettingsFaults, SignalsOnlyCostAnotherTry) {
    const auto trial = [&](bool) {
        live("/b");
        EXPECT_EQ(read("user.reg"), after_);
    };
    failEach(
        faults::kRead | faults::kWrite | faults::kLock, trial, [&] { restore(before_); },
        std::initializer_list<Effect>{Effect::kInterrupt});
}

TEST_F(SettingsFaults, AMergedListIsCompleteOrAbsent) {
    restore(after_);
    failEach(
        faults::kMemory,
        [&](bool) {
            VxSearchPath *merged = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
            EXPECT_EQ(merged != nullptr, !faults::disarm());
            EXPECT_TRUE(merged == nullptr || merged->count == 2);
            vx::tearDownPathStore();
        },
        vx::buildPathStore);
}

TEST_F(SettingsFaults, FoldersAreMadeOrNothingIsWritten) {
    ::setenv("VX_REGISTRY_DIR", at("a/b").c_str(), 1);
    const auto trial = [&](bool) {
        live("/b");
        const std::string text = read("a/b/user.reg");
        EXPECT_TRUE(text.empty() || text.starts_with("REGEDIT4\n")) << text;
    };
    failEach(faults::kOther, trial, [&] { clear(); });
}

// A list that could not be read at load keeps what is stored and what was added to it, unless
// another one has replaced it.
TEST_F(SettingsFaults, AnUnreadListIsReadAgain) {
    const VxUniqueSearchPath other(vxSearchPathCreate("/other"));
    std::string replaced = after_;
    replaced.replace(replaced.find("/a"), 2, "/other");
    for (const std::string &expected : {after_, replaced}) {
        restore(before_);
        faults::arm(faults::kRead);
        vx::buildPathStore();
        faults::disarm();
        VxSearchPath *mine = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER);
        EXPECT_EQ(mine->count, 0U);
        for (VxSearchPath *same : {mine, static_cast<VxSearchPath *>(nullptr)})
            vxPathStoreSet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER, same);
        if (expected == after_) faults::arm(faults::kMemory);
        vxPathStoreSet(VX_CATEGORY_TEXTURES, VX_LEVEL_USER, other.get());
        faults::disarm();
        vxSearchPathInsert(mine, 0, "/b");
        vx::tearDownPathStore();
        EXPECT_EQ(read("user.reg"), expected);
    }
}

TEST_F(SettingsFaults, AnUnchangedListIsReadTwiceAndNeverLockedOrWritten) {
    write("user.reg", after_.substr(0, after_.size() - 1));  // not even for a last line end
    faults::resetCounts();
    for (const int reads : {2, 4}) {  // of the two files
        reads == 2 ? vx::buildPathStore() : vx::tearDownPathStore();
        EXPECT_EQ(faults::count(faults::kOpen), reads);
        EXPECT_EQ(faults::count(faults::kRead), reads);
    }
    EXPECT_EQ(faults::count(faults::kLock | faults::kWrite), 0);
}

// A stopped process may hold the lock for ever.
TEST_F(SettingsFaults, ALockThatIsNotGivenBackIsGivenUp) {
    restore(before_);
    write("user.reg.lock", "");
    const int lock = ::open(at("user.reg.lock").c_str(), O_WRONLY);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    live("/b");
    EXPECT_EQ(read("user.reg"), before_);
    ::close(lock);
    expectGoodForTheNext();
}

// What is renamed into place has reached the disk.
TEST_F(SettingsFaults, SyncsBeforeItRenames) {
    restore(before_);
    faults::resetCounts();
    live("/b");
    EXPECT_NE(std::string(faults::trace()).find("write fsync fstat close rename "),
              std::string::npos)
        << faults::trace();
}

TEST_F(SettingsFaults, KilledAtAnyCall) {
    bool killed = true;
    for (int n = 1; killed && !HasFailure(); ++n) {
        SCOPED_TRACE(n);
        RecordProperty("kills", n - 1);
        restore(before_);
        const pid_t child = ::fork();
        if (child == 0) {
            faults::arm(faults::kFiles, n, false, Effect::kKill);
            live("/b");
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        killed = WEXITSTATUS(status) == faults::kKilled;
        EXPECT_TRUE(killed || n > 1) << "no call was reached";
        expectNothingLost(before_);
        expectGoodForTheNext();
    }
}

// ---- Pinned streams

constexpr char kUsersLocale[] = "de_DE.UTF-8";
static std::string localeAtClose;

class Streams : public Faults {
protected:
    Streams() {
        EXPECT_NE(std::setlocale(LC_NUMERIC, kUsersLocale), nullptr);
        vx::createLock();
        vx::streamMapBuild();
    }
    ~Streams() override {
        vx::streamMapTearDown();
        std::setlocale(LC_NUMERIC, "C");
    }
    static FILE *open() { return vxStreamOpen("/dev/null", "r+"); }
    static void expectLocale(const char *expected) {
        EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), expected);
    }
};

TEST_F(Streams, PinTheLocaleUntilTheyAreClosed) {
    VxUniqueStream stream(vxStreamOpen(file_.c_str(), "w+"));
    EXPECT_EQ(vxStreamOpen("/nowhere/at/all", "r"), nullptr);
    std::fprintf(stream.get(), "%.2f", 1.25);
    std::rewind(stream.get());
    char text[8] = "";
    EXPECT_STREQ(std::fgets(text, sizeof text, stream.get()), "1.25");
    expectLocale("C");
    faults::observer = [](const char *) { localeAtClose = std::setlocale(LC_NUMERIC, nullptr); };
    stream.reset();
    faults::observer = nullptr;
    EXPECT_EQ(localeAtClose, kUsersLocale) << "what closing a file calls has the user's locale";
    expectLocale(kUsersLocale);
}

TEST_F(Streams, BringBackTheLocaleThatTheyFound) {
    FILE *a = open(), *b = open();
    EXPECT_EQ(vxStreamClose(b), 0);
    expectLocale("C");
    EXPECT_EQ(vxStreamClose(a), 0);
    expectLocale(kUsersLocale);
    FILE *other = std::fopen("/dev/full", "w");  // not opened as a pinned stream
    std::fputc('x', other);
    EXPECT_EQ(vxStreamClose(other), EOF);
    expectLocale(kUsersLocale);
    FILE *lost = open();
    std::fclose(lost);
    FILE *again = open();  // inherits what the lost one found
    EXPECT_EQ(vxStreamClose(again), 0);
    expectLocale(again == lost ? kUsersLocale : "C");
    std::setlocale(LC_NUMERIC, kUsersLocale);
    a = open();
    b = open();
    EXPECT_EQ(vxStreamClose(a), 0);
    expectLocale(kUsersLocale);
    EXPECT_EQ(vxStreamClose(b), 0);
    expectLocale("C");
}

TEST_F(Streams, StayOpenWhenTheLibraryGoes) {
    const int blocks = faults::blocksOut();
    std::vector<FILE *> streams(100);
    for (FILE *&stream : streams)
        stream = open();
    for (std::size_t i = 0; i < streams.size(); i += 2)
        EXPECT_EQ(vxStreamClose(streams[i]), 0);
    vx::streamMapTearDown();
    EXPECT_EQ(faults::blocksOut(), blocks);
    expectLocale("C");
    for (std::size_t i = 1; i < streams.size(); i += 2)
        EXPECT_EQ(std::fclose(streams[i]), 0);
    vx::streamMapBuild();
}

// Whatever the C library says of a file, the locale comes back.
TEST_F(Streams, BringTheLocaleBackIfTheFileFails) {
    failEach(faults::kOpen | faults::kOther, [](bool) {
        FILE *stream = open();
        expectLocale(stream != nullptr ? "C" : kUsersLocale);
        const int closed = stream != nullptr ? vxStreamClose(stream) : EOF;
        EXPECT_EQ(closed, faults::disarm() ? EOF : 0);
        expectLocale(kUsersLocale);
    });
}

TEST_F(Streams, ReuseTheMemoryOfClosedOnesAndEndTheProcessWithoutAny) {
    const auto openWithout = [](int allocation) {  // and all after it
        faults::arm(faults::kMemory, allocation);
        FILE *stream = open();
        faults::disarm();
        return stream;
    };
    EXPECT_EXIT(openWithout(2), testing::ExitedWithCode(1), "^out of memory\n$");
    EXPECT_EQ(vxStreamClose(open()), 0);
    EXPECT_EQ(vxStreamClose(openWithout(2)), 0);
    expectLocale(kUsersLocale);
    EXPECT_EQ(vxStreamClose(openWithout(1)), 0);  // the name of the locale is lost
    expectLocale("C");
}

}  // namespace
