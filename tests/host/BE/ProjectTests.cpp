#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <BE/Backend.h>
#include <BE/Project.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

namespace BE::test {
namespace {

using testing::HasSubstr;

constexpr TickTime kUnset;
constexpr TickTime At(std::int64_t inTicks)
{
    return TickTime::FromTicks(inTicks);
}

InterfaceRef<IClipProjectItem> MakeClip(const UTF16String& inName, const UTF16String& inPath)
{
    return CreateClipProjectItem(inName, CreateMasterClip({CreateMedia(inPath)}));
}

/// Everything that a project holds, as text.
void Dump(const IBinProjectItem& inBin, std::string inIndent, std::string& outText)
{
    using kiocore::utility::ToUTF8;
    for (const auto& item : inBin.GetItems()) {
        const InterfaceRef<IProperties> properties = item;
        outText += inIndent + item->GetID().AsUTF8() + " " + ToUTF8(item->GetName()) + " " +
                   ToUTF8(properties->GetText("text", u"-")) +
                   (properties->GetBool("flag", false) ? " flag" : "");
        if (const InterfaceRef<IClipProjectItem> clip = item) {
            outText += " " + std::to_string(clip->GetInPoint().Ticks()) + ".." +
                       std::to_string(clip->GetOutPoint().Ticks());
            const auto master = clip->GetMasterClip();
            for (std::size_t i = 0; i < master->GetMediaCount(); ++i) {
                outText += " [";
                for (char16_t unit : master->GetMedia(i)->GetFilePath()) {
                    outText += std::to_string(unsigned(unit)) + " ";
                }
                outText += "]";
            }
        }
        outText += "\n";
        if (const InterfaceRef<IBinProjectItem> bin = item) {
            Dump(*bin, inIndent + "  ", outText);
        }
    }
}

std::string Dump(const InterfaceRef<IProject>& inProject)
{
    std::string text;
    Dump(*inProject->GetRootBin(), "", text);
    return text;
}

TEST(Project, ComesBackFromItsFileAsItWas)
{
    const support::TemporaryFolder folder;
    const UTF16String file = folder.UTF16("film.hproj");
    const auto project = CreateProject();
    const auto bin = CreateBinProjectItem(u"Day 1 \"\u4E2D\"");
    project->GetRootBin()->AddItem(bin);
    bin->AddItem(CreateBinProjectItem(u"empty"));
    const auto clip = MakeClip(u"a", u"/media/\xDCFF\xD83D\xDE00.mov"); // a byte that is no UTF-8, a pair
    ASSERT_TRUE(clip->SetInOutPoints(At(std::numeric_limits<std::int64_t>::min()),
                                     At(std::numeric_limits<std::int64_t>::max())));
    const InterfaceRef<IProperties> properties = clip;
    properties->SetBool("flag", true);
    properties->SetText("text", u"line\nline");
    bin->AddItem(clip);
    const auto master = CreateMasterClip({CreateMedia(u"/media/b.mov"), CreateMedia(u"/media/b.wav")});
    for (const char16_t* name : {u"first half", u"second half"}) {
        project->GetRootBin()->AddItem(CreateClipProjectItem(name, master));
    }
    WriteProjectFile(project, file);

    const auto again = ReadProjectFile(file);
    EXPECT_EQ(Dump(again), Dump(project));
    const auto items = again->GetAllItems();
    ASSERT_EQ(items.size(), 5u);
    EXPECT_EQ(InterfaceRef<IClipProjectItem>(items[3])->GetMasterClip(),
              InterfaceRef<IClipProjectItem>(items[4])->GetMasterClip());
    const std::string bytes = support::ReadFile(folder / "film.hproj");
    WriteProjectFile(again, file);
    EXPECT_EQ(support::ReadFile(folder / "film.hproj"), bytes);
}

const std::string kBinID = "00000000-0000-0000-0000-000000000001";
const std::string kClipID = "00000000-0000-0000-0000-000000000002";
const std::string kMasterID = "00000000-0000-0000-0000-000000000003";

/// A small project file in which a test changes one text.
std::string Small(const std::string& inFrom = {}, const std::string& inTo = {})
{
    std::string text = R"({"format": "TRFoundation project", "version": 1, "later": [1.5, {"x": null}],
"masterClips": [{"id": ")" +
                       kMasterID + R"(", "rating": 5, "media": [{"path": "/a.mov", "proxy": "/p.mov"}]}],
"root": {"kind": "bin", "id": ")" +
                       kBinID + R"(", "name": "", "label": "root", "items": [
  {"kind": "clip", "id": ")" +
                       kClipID + R"(", "name": "a", "masterClip": ")" + kMasterID + R"(",
   "inPoint": 5, "outPoint": 7, "color": "red", "properties": {"k": true}}]}})";
    if (!inFrom.empty()) {
        text.replace(text.find(inFrom), inFrom.size(), inTo);
    }
    return text;
}

TEST(Project, WhatThisBuildDoesNotKnowIsKept)
{
    const support::TemporaryFolder folder;
    const UTF16String file = support::WriteFile(folder / "p.hproj", Small());
    const auto project = ReadProjectFile(file);
    const auto item = project->GetAllItems().at(0);
    ProjectItemUtils::UpdateProjectItemWithInOutPoints(item, At(6), kUnset, false);
    WriteProjectFile(project, file);
    const std::string saved = support::ReadFile(folder / "p.hproj");
    for (const char* kept :
         {"\"later\": [\n    1.5,", "\"x\": null", "\"rating\": 5", "\"proxy\": \"/p.mov\"",
          "\"label\": \"root\"", "\"color\": \"red\"", "\"k\": true", "\"inPoint\": 6"}) {
        EXPECT_THAT(saved, HasSubstr(kept));
    }
    EXPECT_THAT(saved, Not(HasSubstr("outPoint")));

    // A master clip stays although no clip uses it.
    support::WriteFile(folder / "p.hproj", Small("\"items\": [", "\"items\": [], \"was\": ["));
    WriteProjectFile(ReadProjectFile(file), file);
    EXPECT_THAT(support::ReadFile(folder / "p.hproj"), HasSubstr("\"path\": \"/a.mov\""));
}

TEST(Project, ADamagedFileIsRefusedWithItsPlace)
{
    const support::TemporaryFolder folder;
    const struct {
        const char* name;
        std::string text;
        const char* error;
    } kCases[] = {
        {"empty", "", "JSON not well-formed: line 1, column 1"},
        {"cut off", Small().substr(0, 300), "JSON not well-formed"},
        {"no object", "[]", "$: found an array, expected an object"},
        {"another format", Small("TRFoundation project", "cut list"),
         "$.format: found the text \"cut list\""},
        {"of a later version", Small("\"version\": 1", "\"version\": 2"), "$.version: found the number 2"},
        {"without root", Small("\"root\"", "\"tree\""), "$: found no member root"},
        {"the root is a clip", Small("\"kind\": \"bin\"", "\"kind\": \"clip\""),
         "$.root: found no member masterClip"},
        {"an item of unknown kind", Small("\"kind\": \"clip\"", "\"kind\": \"title\""),
         "$.root.items[0].kind: found the text \"title\", expected bin or clip"},
        {"without name", Small("\"name\": \"a\",", ""), "$.root.items[0]: found no member name"},
        {"no identifier", Small(kClipID, "2"), "$.root.items[0].id: found the text \"2\""},
        {"an identifier twice", Small(kClipID, kBinID), "$.root.items[0].id: found "},
        {"an unknown master clip", Small("\"masterClip\": \"" + kMasterID, "\"masterClip\": \"" + kBinID),
         "$.root.items[0].masterClip: found 00000000-0000-0000-0000-000000000001, expected one that"},
        {"points the wrong way round", Small("\"outPoint\": 7", "\"outPoint\": 4"),
         "$.root.items[0].outPoint: found the number 4, expected at least that of inPoint, 5"},
        {"a point that is no number", Small("\"inPoint\": 5", "\"inPoint\": \"5\""),
         "$.root.items[0].inPoint: found the text \"5\""},
        {"a property of another type", Small("\"k\": true", "\"k\": 3"),
         "$.root.items[0].properties.k: found the number 3, expected true, false or a text"},
        {"items that are none", Small("\"items\": [", "\"items\": {}, \"i\": ["),
         "$.root.items: found an object, expected an array"},
        {"media without path", Small("\"path\"", "\"file\""),
         "$.masterClips[0].media[0]: found no member path"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const UTF16String file = support::WriteFile(folder / "p.hproj", test.text);
        try {
            ReadProjectFile(file);
            ADD_FAILURE() << "was read";
        } catch (const exDamagedData& error) {
            EXPECT_THAT(error.what(), HasSubstr((folder / "p.hproj").native()));
            EXPECT_THAT(error.what(), HasSubstr(test.error));
        }
    }
    EXPECT_THROW(ReadProjectFile(folder.UTF16("none")), kiocore::file_exception);
    EXPECT_THROW(ReadProjectFile(folder.UTF16()), kiocore::file_exception);
}

TEST(Project, AFailedSaveLeavesTheOldFile)
{
    const support::TemporaryFolder folder;
    const UTF16String file = support::WriteFile(folder / "p.hproj", "old");
    EXPECT_THROW(WriteProjectFile(CreateProject(), folder.UTF16("none/p.hproj")), kiocore::file_exception);
    EXPECT_THROW(WriteProjectFile({}, file), kiocore::kio_exception);
    support::FaultyFileCalls calls;
    calls.FailCalls("Write", ENOSPC);
    try {
        WriteProjectFile(CreateProject(), file);
        ADD_FAILURE() << "was saved";
    } catch (const kiocore::file_exception& error) {
        EXPECT_EQ(error.Errno(), ENOSPC);
        EXPECT_THAT(error.what(), HasSubstr((folder / "p.hproj").native()));
    }
    EXPECT_EQ(support::ReadFile(folder / "p.hproj"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST(Project, ALinkToTheFileStaysOne)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "real/p.hproj", "old");
    std::filesystem::create_symlink("real/p.hproj", folder / "link.hproj");
    WriteProjectFile(CreateProject(), folder.UTF16("link.hproj"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.hproj"));
    EXPECT_NE(support::ReadFile(folder / "real/p.hproj"), "old");
}

TEST(Project, BinsTakeWhatBelongsIntoThem)
{
    const auto outer = CreateBinProjectItem(u"outer");
    const auto inner = CreateBinProjectItem(u"inner");
    outer->AddItem(inner);
    const auto clip = MakeClip(u"clip", u"/a");
    inner->AddItem(clip);
    const struct {
        const char* name;
        InterfaceRef<IBinProjectItem> bin;
        InterfaceRef<IProjectItem> item;
    } kCases[] = {
        {"nothing", outer, {}},
        {"itself", outer, outer},
        {"what it lies in", inner, outer},
        {"what lies in another", outer, clip},
        {"what it has", inner, clip},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_THROW(test.bin->AddItem(test.item), kiocore::kio_exception);
    }
    EXPECT_EQ(outer->GetItems().size(), 1u);
    EXPECT_EQ(inner->GetItems().size(), 1u);
    // Once its bin is gone, an item may go into another.
    auto passing = CreateBinProjectItem(u"passing");
    const auto moved = MakeClip(u"moved", u"/b");
    passing->AddItem(moved);
    passing.Reset();
    EXPECT_NO_THROW(outer->AddItem(moved));
}

TEST(Project, AsDeepAsBinsMayLieCanBeSavedAndRead)
{
    const support::TemporaryFolder folder;
    const UTF16String file = folder.UTF16("deep.hproj");
    const auto project = CreateProject();
    auto bin = project->GetRootBin();
    for (std::size_t level = 1; level < kMaxBinLevels; ++level) {
        const auto next = CreateBinProjectItem(u"bin");
        bin->AddItem(next);
        bin = next;
    }
    bin->AddItem(MakeClip(u"deepest", u"/a"));
    EXPECT_THROW(bin->AddItem(CreateBinProjectItem(u"one too many")), kiocore::kio_exception);
    WriteProjectFile(project, file);
    EXPECT_EQ(ReadProjectFile(file)->GetAllItems().size(), kMaxBinLevels);
}

TEST(ProjectItemUtils, PointsAreSetAsAsked)
{
    const struct {
        const char* name;
        TickTime oldIn, oldOut, in, out;
        bool keep;
        int result;
        TickTime newIn, newOut;
    } kCases[] = {
        {"both", kUnset, kUnset, At(1), At(2), false, 0, At(1), At(2)},
        {"unset takes away", At(1), At(2), kUnset, kUnset, false, 0, kUnset, kUnset},
        {"empty range", kUnset, kUnset, At(2), At(2), false, 0, At(2), At(2)},
        {"only out, before the old in", At(5), kUnset, kUnset, At(2), false, 0, kUnset, At(2)},
        {"wrong way round", At(1), At(2), At(4), At(3), false, -2, At(1), At(2)},
        {"kept where set", At(1), kUnset, At(4), At(6), true, 0, At(1), At(6)},
        {"kept against the new one", At(5), kUnset, At(1), At(2), true, -2, At(5), kUnset},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto clip = MakeClip(u"clip", u"/a");
        ASSERT_TRUE(clip->SetInOutPoints(test.oldIn, test.oldOut));
        EXPECT_EQ(ProjectItemUtils::UpdateProjectItemWithInOutPoints(clip, test.in, test.out, test.keep),
                  test.result);
        EXPECT_EQ(clip->GetInPoint(), test.newIn);
        EXPECT_EQ(clip->GetOutPoint(), test.newOut);
    }
    EXPECT_EQ(
        ProjectItemUtils::UpdateProjectItemWithInOutPoints(CreateBinProjectItem(u"bin"), At(1), At(2), false),
        -1);
    EXPECT_EQ(ProjectItemUtils::UpdateProjectItemWithInOutPoints({}, At(1), At(2), false), -1);
    EXPECT_FALSE(MasterClipUtils::GetMedia({}, 0));
    EXPECT_FALSE(MasterClipUtils::GetMedia(CreateMasterClip({}), 0));
}

} // namespace
} // namespace BE::test
