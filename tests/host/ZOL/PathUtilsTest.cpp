#include <ZOL/PathUtils.h>

#include <gtest/gtest.h>

namespace ZOL {
namespace {

TEST(PathUtils, TakesPathsApart)
{
    const struct {
        UTF16View path;
        UTF16View directory;
        UTF16View file;
        UTF16View extension;
    } kCases[] = {
        {u"", u"", u"", u""},
        {u"c.wav", u"", u"c.wav", u".wav"},
        {u"/a/b/c.wav", u"/a/b/", u"c.wav", u".wav"},
        {u"/a/b/", u"/a/b/", u"", u""},
        {u"/", u"/", u"", u""},
        {u"/a/b.c/d", u"/a/b.c/", u"d", u""},
        {u"/a/.hidden", u"/a/", u".hidden", u""},
        {u"/a/.hidden.pek", u"/a/", u".hidden.pek", u".pek"},
        {u"/a/two.parts.cfa", u"/a/", u"two.parts.cfa", u".cfa"},
        {u"C:\\media\\clip.mov", u"", u"C:\\media\\clip.mov", u".mov"},
        {u"/\xD83C\xDFAC/\x0001.\xDCFF", u"/\xD83C\xDFAC/", u"\x0001.\xDCFF", u".\xDCFF"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(testing::PrintToString(test.path));
        EXPECT_EQ(PathUtils::GetDrivePart(test.path), u"");
        EXPECT_EQ(PathUtils::GetDirectoryPart(test.path), test.directory);
        EXPECT_EQ(PathUtils::GetFullDirectoryPart(test.path), test.directory);
        EXPECT_EQ(PathUtils::GetFullFilePart(test.path), test.file);
        EXPECT_EQ(PathUtils::GetExtension(test.path), test.extension);
    }
}

TEST(PathUtils, Normalizes)
{
    const struct {
        UTF16View path;
        UTF16View normalized;
    } kCases[] = {
        {u"", u""},
        {u"/", u"/"},
        {u"/a/b.wav", u"/a/b.wav"},
        {u"/a/b/", u"/a/b/"},
        {u"//a///b", u"/a/b"},
        {u"/a/./b/.", u"/a/b"},
        {u"/a/b/../c", u"/a/c"},
        {u"/a/b/..", u"/a"},
        {u"/a/b/../", u"/a/"},
        {u"/..", u"/"},
        {u"/../../a", u"/a"},
        {u"/a/..", u"/"},
        {u"/a/../", u"/"},
        {u"../a", u"../a"},
        {u"../../a", u"../../a"},
        {u"a/../..", u".."},
        {u"./a", u"a"},
        {u".", u"."},
        {u"./", u"./"},
        {u"a/..", u"."},
        {u"/a/.hidden/..b/c..", u"/a/.hidden/..b/c.."},
        {u"/a/...", u"/a/..."},
        {u"\\a\\..\\b", u"\\a\\..\\b"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(testing::PrintToString(test.path));
        EXPECT_EQ(PathUtils::ToNormalizedPath(test.path), test.normalized);
        EXPECT_EQ(PathUtils::ToNormalizedPath(test.normalized), test.normalized) << "once is enough";
    }
}

} // namespace
} // namespace ZOL
