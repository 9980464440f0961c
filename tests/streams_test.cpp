// Streams that pin the numeric locale, in a library that is loaded and unloaded for real.

#include <vxtext.h>

#include <clocale>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr char kUsers[] = "de_DE.UTF-8";

std::string numericLocale() {
    return std::setlocale(LC_NUMERIC, nullptr);
}

std::string *localeAtClose;  // null: nobody wants to know

}  // namespace

// Stands before that of the C library, for the library under test too.
extern "C" __attribute__((visibility("default"))) int fclose(FILE *stream) {
    if (localeAtClose != nullptr) *localeAtClose = numericLocale();
    return reinterpret_cast<int (*)(FILE *)>(::dlsym(RTLD_NEXT, "fclose"))(stream);
}

namespace {

class Streams : public testing::Test {
protected:
    Streams() {
        EXPECT_NE(std::setlocale(LC_NUMERIC, kUsers), nullptr);
        library_ = ::dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        open_ = reinterpret_cast<decltype(open_)>(::dlsym(library_, "vxStreamOpen"));
        close_ = reinterpret_cast<decltype(close_)>(::dlsym(library_, "vxStreamClose"));
    }
    ~Streams() override {
        if (library_ != nullptr) ::dlclose(library_);
        std::setlocale(LC_NUMERIC, "C");
    }
    FILE *openNull() const { return open_("/dev/null", "r+"); }

    void *library_;
    decltype(&vxStreamOpen) open_;
    decltype(&vxStreamClose) close_;
};

TEST_F(Streams, PinTheLocaleWhileTheyAreOpen) {
    EXPECT_EQ(open_("/nowhere/at/all", "r"), nullptr);
    EXPECT_EQ(numericLocale(), kUsers);
    FILE *stream = open_("numbers.txt", "w+");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(open_("/nowhere/at/all", "r"), nullptr);
    std::fprintf(stream, "%.2f", 1.25);
    std::rewind(stream);
    double number = 0;
    EXPECT_EQ(std::fscanf(stream, "%lf", &number), 1);
    EXPECT_EQ(number, 1.25);
    EXPECT_EQ(std::ftell(stream), 4);
    EXPECT_EQ(numericLocale(), "C");
    std::string locale;
    localeAtClose = &locale;
    EXPECT_EQ(close_(stream), 0);
    localeAtClose = nullptr;
    EXPECT_EQ(locale, kUsers) << "what closing a file calls has the user's locale";
    EXPECT_EQ(numericLocale(), kUsers);
}

TEST_F(Streams, BringBackWhatTheyFound) {
    FILE *a = openNull();
    FILE *b = openNull();
    EXPECT_EQ(close_(b), 0);
    EXPECT_EQ(numericLocale(), "C");
    EXPECT_EQ(close_(a), 0);
    EXPECT_EQ(numericLocale(), kUsers);
    a = openNull();
    b = openNull();
    EXPECT_EQ(close_(a), 0);
    EXPECT_EQ(numericLocale(), kUsers);
    EXPECT_EQ(close_(b), 0);
    EXPECT_EQ(numericLocale(), "C");
}

TEST_F(Streams, AreTakenFromFopenToo) {
    FILE *stream = std::fopen("/dev/full", "w");
    std::fputc('x', stream);
    EXPECT_EQ(close_(stream), EOF);
    EXPECT_EQ(numericLocale(), kUsers);
}

TEST_F(Streams, KeepTheOlderNoteOfAnAddress) {
    FILE *stream = openNull();
    std::fclose(stream);
    FILE *again = openNull();
    if (again != stream) GTEST_SKIP() << "the C library gave another address";
    EXPECT_EQ(close_(again), 0);
    EXPECT_EQ(numericLocale(), kUsers);  // not the "C" that the second one found
}

TEST_F(Streams, AreForgottenAtUnload) {
    std::vector<FILE *> streams;
    for (int i = 0; i < 100; ++i)
        streams.push_back(openNull());
    for (std::size_t i = 0; i < 50; ++i)
        close_(streams[2 * i]);
    std::setlocale(LC_NUMERIC, "C");
    ::dlclose(library_);
    library_ = nullptr;
    ASSERT_EQ(::dlopen(VX_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    EXPECT_EQ(numericLocale(), "C");
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(std::fclose(streams[2 * i + 1]), 0);
}

}  // namespace
