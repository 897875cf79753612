#include "support/TemporaryFolder.h"

#include <kiocore/platform/Browser.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using kiocore::UTF16String;
using kiocore::platform::OpenURLInBrowser;
using kiocore::platform::ScReplaceBrowser;

TEST(Browser, OpensWebAddressesOnly)
{
    std::vector<std::string> opened;
    const ScReplaceBrowser browser([&](const std::string& url) {
        opened.push_back(url);
        return 0;
    });
    const struct {
        const char* name;
        UTF16String url;
        int expected;
    } kCases[] = {
        {"https", u"https://example.org/raw?a=1&b='2'", 0},
        {"http in capitals", u"HTTP://example.org", 0},
        {"a local file", u"file:///etc/passwd", -1},
        {"a script", u"javascript:alert(1)", -1},
        {"an option", u"--help", -1},
        {"a scheme alone", u"https://", -1},
        {"white space", u"https://example.org/ x", -1},
        {"a line feed", u"https://example.org/\nx", -1},
        {"a zero unit", UTF16String(u"https://a\0b", 11), -1},
        {"nothing", u"", -1},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(OpenURLInBrowser(test.url), test.expected) << test.name;
    }
    EXPECT_EQ(opened, (std::vector<std::string>{"https://example.org/raw?a=1&b='2'", "HTTP://example.org"}));
}

/// The search path for programs, put back at the end.
class ScSearchPath {
public:
    explicit ScSearchPath(const std::string& inPath) { setenv("PATH", inPath.c_str(), 1); }
    ~ScSearchPath() { setenv("PATH", mBefore.c_str(), 1); }

private:
    const std::string mBefore = std::getenv("PATH");
};

TEST(Browser, HandsTheAddressToTheDesktopAsItIs)
{
    const support::TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "opened").c_str(), 0600), 0);
    support::WriteFile(folder / "xdg-open",
                       "#!/bin/sh\nprintf '%s' \"$1\" >'" + (folder / "opened").string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const ScSearchPath path(folder.Path().string());
    const std::string url = "https://example.org/$(touch%20x)?\"quoted\"&`a`;";
    EXPECT_EQ(OpenURLInBrowser(kiocore::utility::ToUTF16(url)), 0);
    EXPECT_EQ(support::ReadFile(folder / "opened"), url); // reading a pipe waits for its writer
}

TEST(Browser, SaysWhenThereIsNothingToOpenItWith)
{
    const support::TemporaryFolder folder;
    const ScSearchPath path(folder.Path().string());
    EXPECT_EQ(OpenURLInBrowser(u"https://example.org"), -2);
}

} // namespace
