#include "support/TraceRecorder.h"

#include <TR/FileExtensions.h>
#include <TR/TRAssetSpecifier.h>

#include <BE/Backend.h>
#include <BE/Project.h>
#include <kiocore/serialization/Serializer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace TR {
namespace {

using kiocore::serialization::Serializer;

constexpr TickTime At(std::int64_t inTicks)
{
    return TickTime::FromTicks(inTicks);
}

const std::vector<AssetSpecifier> kSpecifiers{{u"/b.mov", At(-1), At(9'007'199'254'740'993)},
                                              {u"", TickTime(), TickTime()},
                                              {u"/\xDCFF.mov", At(2), TickTime()}};

TEST(AssetSpecifier, ListsBecomePathsAndBackInOrder)
{
    const auto paths = ConvertToPathVector(kSpecifiers);
    EXPECT_EQ(paths, (std::vector<UTF16String>{u"/b.mov", u"", u"/\xDCFF.mov"}));
    const auto again = ConvertFromPathVector(paths);
    EXPECT_EQ(ConvertToPathVector(again), paths);
    for (const AssetSpecifier& specifier : again) {
        EXPECT_EQ(specifier.GetInPoint().Ticks(), -101'606'400'000'000'000);
        EXPECT_EQ(specifier.GetOutPoint().Ticks(), -101'606'400'000'000'000);
    }
}

TEST(AssetSpecifier, ComesBackFromJSON)
{
    using List = Serializer<std::vector<AssetSpecifier>>;
    const std::string text = List::ToUTF8String(kSpecifiers);
    EXPECT_EQ(text, R"([{"InPoint":-1,"OutPoint":9007199254740993,"Path":"/b.mov"},)"
                    R"({"InPoint":-101606400000000000,"OutPoint":-101606400000000000,"Path":""},)"
                    R"({"InPoint":2,"OutPoint":-101606400000000000,"Path":"/\udcff.mov"}])");
    const auto again = List::FromUTF8String(text);
    EXPECT_EQ(List::ToUTF8String(again), text);
    EXPECT_EQ(ConvertToPathVector(again), ConvertToPathVector(kSpecifiers));
}

TEST(AssetSpecifier, WhatIsAbsentInJSONHasItsDefault)
{
    const struct {
        const char* name;
        const char* text;
        UTF16String path;
        TickTime in, out;
    } kCases[] = {
        {"no object", "3", u"", {}, {}},
        {"null", "null", u"", {}, {}},
        {"a path alone is no object", "\"/a\"", u"", {}, {}},
        {"no path: points do not count", R"({"InPoint":1,"OutPoint":2})", u"", {}, {}},
        {"no path: nor does their type", R"({"InPoint":"x"})", u"", {}, {}},
        {"names are told by case", R"({"path":"/a"})", u"", {}, {}},
        {"only a path", R"({"Path":"/a"})", u"/a", {}, {}},
        {"no out point", R"({"Path":"/a","InPoint":1})", u"/a", At(1), {}},
        {"no in point", R"({"Path":"/a","OutPoint":0})", u"/a", {}, At(0)},
        {"more than is known", R"({"Path":"/a","InPoint":1,"OutPoint":2,"Rating":5})", u"/a", At(1), At(2)},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto specifier = Serializer<AssetSpecifier>::FromUTF8String(test.text);
        EXPECT_EQ(specifier.GetPath(), test.path);
        EXPECT_EQ(specifier.GetInPoint(), test.in);
        EXPECT_EQ(specifier.GetOutPoint(), test.out);
    }
    for (const char* text :
         {R"({"Path":1})", R"({"Path":"/a","OutPoint":1.5})", R"({"Path":"/a","InPoint":null})"}) {
        EXPECT_THROW(Serializer<AssetSpecifier>::FromUTF8String(text),
                     kiocore::serialization::bad_cast_exception)
            << text;
    }
}

/// A clip by its name's letter: of a file, perhaps known first under another path.
InterfaceRef<BE::IProjectItem> Clip(const UTF16String& inMediaPath, const UTF16String& inOriginalPath = {})
{
    const auto clip = BE::CreateClipProjectItem(
        u"clip", BE::CreateMasterClip({BE::CreateMedia(inMediaPath), BE::CreateMedia(u"/2")}));
    clip->SetInOutPoints(At(100), At(200));
    if (!inOriginalPath.empty()) {
        InterfaceRef<BE::IProperties>(clip)->SetText(BE::kProjectItemOriginalAssetNamePathPropertyKey,
                                                     inOriginalPath);
    }
    return clip;
}

TEST(AssetSpecifier, PointsGoToTheItemsOfThePath)
{
    const AssetSpecifier a(u"/a", At(1), At(2));
    const struct {
        const char* name;
        std::vector<InterfaceRef<BE::IProjectItem>> items;
        std::vector<AssetSpecifier> specifiers;
        std::vector<std::int64_t> expectedIn;
    } kCases[] = {
        {"nothing to do", {Clip(u"/a")}, {}, {100}},
        {"no such path", {Clip(u"/b")}, {a}, {100}},
        {"two clips of one file", {Clip(u"/a"), Clip(u"/b"), Clip(u"/a")}, {a}, {1, 100, 1}},
        {"the original path counts", {Clip(u"/moved", u"/a")}, {a}, {1}},
        {"and not where the media is now", {Clip(u"/a", u"/original")}, {a}, {100}},
        {"a path that is no UTF-8",
         {Clip(u"/x", u"/\xDC80"), Clip(u"/\xDC80")},
         {{u"/\xDC80", At(5), At(6)}},
         {5, 5}},
        {"the second media does not count", {Clip(u"/b")}, {{u"/2", At(1), At(2)}}, {100}},
        {"exactly the path", {Clip(u"/A"), Clip(u"/a/"), Clip(u"//a")}, {a}, {100, 100, 100}},
        {"an empty path is none", {Clip(u"")}, {{u"", At(1), At(2)}}, {100}},
        {"the last specifier of a path counts",
         {Clip(u"/a")},
         {a, {u"/b", At(8), At(9)}, {u"/a", At(3), At(4)}},
         {3}},
        {"the unset time takes points away",
         {Clip(u"/a")},
         ConvertFromPathVector({u"/a"}),
         {TickTime::kUnsetTicks}},
        {"refused by one, set in the next", {Clip(u"/a")}, {{u"/a", At(9), At(8)}, a}, {1}},
        {"neither clips nor anything", {BE::CreateBinProjectItem(u"/a"), {}, Clip(u"/a")}, {a}, {0, 0, 1}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        UpdateProjectItemsWithInOutPoints(test.items, test.specifiers);
        for (std::size_t i = 0; i < test.items.size(); ++i) {
            if (const InterfaceRef<BE::IClipProjectItem> clip = test.items[i]) {
                EXPECT_EQ(clip->GetInPoint(), At(test.expectedIn[i])) << "item " << i;
            }
        }
    }
}

TEST(AssetSpecifier, TheHostSeesEachUpdate)
{
    const support::TraceRecorder trace("Host");
    UpdateProjectItemsWithInOutPoints({Clip(u"/a"), Clip(u"/b")},
                                      {{u"/b", At(1), At(2)}, {u"/a", At(3), At(4)}});
    EXPECT_THAT(
        trace.Order({"BE::ProjectItemUtils::UpdateProjectItemWithInOutPoints(\"clip\", 1, 2, false)",
                     "BE::ProjectItemUtils::UpdateProjectItemWithInOutPoints(\"clip\", 3, 4, false)"}),
        testing::SizeIs(2));
}

TEST(FileExtensions, AreLowerCaseWithADotAndDiffer)
{
    const std::vector<UTF16String> all{kExtensionProject,
                                       kExtensionProjectBackup,
                                       kExtensionProjectLock,
                                       kExtensionProjectTemplate,
                                       kExtensionSequenceTemplate,
                                       kExtensionTitleTemplate,
                                       kExtensionCaptionTemplate,
                                       kExtensionSubRip,
                                       kExtensionWebVTT,
                                       kExtensionSCC,
                                       kExtensionMCC,
                                       kExtensionEBUSubtitles,
                                       kExtensionTimedText,
                                       kExtensionDistributionProfile,
                                       kExtensionSubStation,
                                       kExtensionAdvancedSubStation,
                                       kExtensionXML,
                                       kExtensionEditDecisionList,
                                       kExtensionAdvancedAuthoringFormat,
                                       kExtensionOpenMediaFramework,
                                       kExtensionOpenTimeline,
                                       kExtensionOpenTimelineArchive,
                                       kExtensionOpenTimelineFolder,
                                       kExtensionColorDecisionList,
                                       kExtensionColorCorrectionCollection};
    EXPECT_EQ(std::set<UTF16String>(all.begin(), all.end()).size(), 25u);
    for (const UTF16String& extension : all) {
        EXPECT_THAT(kiocore::utility::ToUTF8(extension), testing::MatchesRegex("\\.[a-z]+"));
    }
}

} // namespace
} // namespace TR
