#include <support/DocumentIdentity.h>

#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <fstream>

namespace trhost {

namespace {

using kiocore::Guid;

std::string Bytes(std::size_t inSize)
{
    return std::string(inSize, 'x');
}

} // namespace

TEST(DocumentIdentity, ADocumentIsItsCanonicalPath)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "a.wav", "a");
    support::WriteFile(folder / "b.wav", "a");
    std::filesystem::create_symlink(folder / "a.wav", folder / "link.wav");
    const DocumentIdentity media = IdentifyDocument(folder.UTF16("a.wav"));
    EXPECT_EQ(IdentifyDocument(folder.UTF16("link.wav")).documentID, media.documentID);
    EXPECT_EQ(IdentifyDocument(folder.UTF16() + u"/./a.wav").documentID, media.documentID);
    EXPECT_NE(IdentifyDocument(folder.UTF16("b.wav")).documentID, media.documentID);
    EXPECT_EQ(IdentifyDocument(folder.UTF16("b.wav")).sampledContent, media.sampledContent);

    std::filesystem::remove(folder / "a.wav");
    const DocumentIdentity gone = IdentifyDocument(folder.UTF16("a.wav"));
    EXPECT_EQ(gone.documentID, media.documentID) << "media that is gone is still the same document";
    EXPECT_FALSE(gone.isReadable);
}

TEST(DocumentIdentity, TheContentStateFollowsEveryChange)
{
    constexpr std::size_t kSize = 1 << 20;
    const support::TemporaryFolder folder;
    const auto path = folder / "a.wav";
    const auto identify = [&] { return IdentifyDocument(folder.UTF16("a.wav")).contentState; };
    support::WriteFile(path, Bytes(kSize));
    const auto time = std::filesystem::last_write_time(path);
    const Guid before = identify();
    EXPECT_EQ(identify(), before);

    const struct {
        const char* name;
        std::size_t size;
        std::size_t changedByte;
        std::chrono::nanoseconds later;
    } kCases[] = {
        {"one nanosecond later", kSize, kSize, std::chrono::nanoseconds(1)},
        {"first byte", kSize, 0, {}},
        {"byte in the middle", kSize, kSize / 2, {}},
        {"last byte", kSize, kSize - 1, {}},
        {"one byte longer", kSize + 1, kSize + 1, {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string bytes = Bytes(test.size);
        if (test.changedByte < bytes.size()) {
            bytes[test.changedByte] = 'y';
        }
        support::WriteFile(path, bytes);
        std::filesystem::last_write_time(path, time + test.later);
        EXPECT_NE(identify(), before);
    }
    support::WriteFile(path, Bytes(kSize));
    std::filesystem::last_write_time(path, time);
    EXPECT_EQ(identify(), before);
}

TEST(DocumentIdentity, TheResolverLeavesItsAnswersForWhatIsNoMedia)
{
    const support::TemporaryFolder folder;
    for (const std::string name : {"missing.wav", ""}) {
        Guid documentID = Guid::CreateUnique();
        Guid contentState = Guid::CreateUnique();
        const Guid documentBefore = documentID;
        const Guid stateBefore = contentState;
        EXPECT_EQ(ResolveDocument(folder.UTF16(name), false, documentID, contentState), -1) << name;
        EXPECT_EQ(documentID, documentBefore);
        EXPECT_EQ(contentState, stateBefore);
    }
}

} // namespace trhost
