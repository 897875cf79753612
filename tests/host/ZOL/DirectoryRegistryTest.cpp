#include <ZOL/DirectoryRegistry.h>

#include <gtest/gtest.h>

namespace ZOL {
namespace {

TEST(DirectoryRegistry, TheLastRegistrationCountsUntilItIsTakenBack)
{
    UTF16String folder = u"untouched";
    EXPECT_EQ(DirectoryRegistry::FindDirectory("test.folder", folder), -1);
    EXPECT_EQ(folder, u"untouched");
    DirectoryRegistry::RegisterDirectory("test.folder", u"/first/");
    DirectoryRegistry::RegisterDirectory("test.folder", u"/second/");
    EXPECT_EQ(DirectoryRegistry::FindDirectory("test.folder", folder), 0);
    EXPECT_EQ(folder, u"/second/");
    DirectoryRegistry::UnregisterDirectory("test.folder");
    EXPECT_EQ(DirectoryRegistry::FindDirectory("test.folder", folder), -1);
}

} // namespace
} // namespace ZOL
