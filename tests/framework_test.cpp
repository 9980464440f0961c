// The catalogue of libvxframework and its reports.

#include <vxframework.h>
#include <vxmessages.h>

#include <algorithm>
#include <cstdarg>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace {

std::string formatted(const char *catalogue, int id, ...) {
    va_list arguments;
    va_start(arguments, id);
    std::string text = vxMessageFormat(arguments, catalogue, id);
    va_end(arguments);
    return text;
}

TEST(Messages, HaveATextWithTheirArguments) {
    std::map<int, std::string> messages;
#define VX_ADD(number, name, text) messages[name] = text;
    VX_MESSAGES(VX_ADD)
    EXPECT_EQ(messages.size(), 32U);
    EXPECT_EQ(messages.lower_bound(20352)->first, 20352);
    EXPECT_EQ(messages.rbegin()->first, 20382);
    std::set<std::string> texts;
    for (const auto &[number, text] : messages) {
        EXPECT_EQ(vxMessageText("vxmsg", number), text);
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
    EXPECT_NE(formatted("vxmsg", 20363, "a.sgi").find("\"a.sgi\""), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 20363, nullptr).find("(null)"), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 20376, 3, 1).find("3 and 1"), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 4912, 4096).find("4096"), std::string::npos);
    EXPECT_LT(formatted("vxmsg", 20363, std::string(100000, 'x').c_str()).size(), 8192U);
    for (const char *catalogue : {"vxmsg", "other", static_cast<const char *>(nullptr)}) {
        EXPECT_NE(formatted(catalogue, 77, 1).find("77"), std::string::npos);
        EXPECT_NE(std::string(vxMessageText(catalogue, 77)).find("77"), std::string::npos);
    }
}

TEST(Messages, AReportIsOneLine) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(vxMessageReport("two\nlines", 6, 0), 0);
    EXPECT_EQ(vxMessageReport("vxmsg", 5, 4912, 64), 0);
    vxMessageReport(nullptr, 6, 0);
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3) << lines;
    EXPECT_NE(lines.find("two lines\n"), std::string::npos);
    EXPECT_NE(lines.find("64 bytes\n"), std::string::npos);
}

}  // namespace
