#include "Specimens.h"

#include <TR/EffectEnablement.h>
#include <ZOL/RegistryBaseKey.h>
#include <kiocore/utility/RegistryKey.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace trhost::effects {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Catalogue : public testing::Test {
protected:
    Catalogue()
    {
        kiocore::utility::SetRegistryFile(mFolder.UTF16("registry.json"));
        mSettings.worker = specimens::Worker();
        mSettings.cacheFolder = (mFolder / "cache").native();
    }
    ~Catalogue() override { kiocore::utility::SetRegistryFile({}); }

    void Write(const std::string& inName, const std::vector<std::string>& inLines)
    {
        const PluginFile file = specimens::WritePlugins(mFolder, inName, inLines);
        std::erase_if(mSettings.files, [&](const PluginFile& inFile) { return inFile.file == file.file; });
        mSettings.files.push_back(file);
    }
    EffectCatalogue Load() { return EffectCatalogue::Load(mSettings, {}, {}); }
    static std::vector<std::string> TypeNames(const EffectCatalogue& inCatalogue,
                                              const std::string& inMatchName)
    {
        std::vector<std::string> names;
        const EffectCatalogue::Effect* const effect = inCatalogue.Find(inMatchName);
        if (!effect) {
            return {"not found"};
        }
        for (const auto& type : effect->types) {
            names.push_back(kiocore::utility::ToUTF8(type->GetName()));
        }
        return names;
    }
    static std::string TypeCacheKey()
    {
        return kiocore::utility::ToUTF8(ZOL::GetRegistryBaseKey()) + TR::kEffectTypeCacheKeyName;
    }

    support::TemporaryFolder mFolder;
    CatalogueSettings mSettings;
};

TEST_F(Catalogue, ASecondStartLoadsNothingAndKnowsAll)
{
    Write("good", {"plain: bgra8", "yuv: yuv420 bgra32f", "gpu: accelerated bgra32f"});
    Write("bad", {"crash here", "fine: bgra8"});
    Write("worse", {"crash"});
    std::vector<std::string> firstTexts;
    for (const bool isFirst : {true, false}) {
        SCOPED_TRACE(isFirst ? "first start" : "second start");
        const EffectCatalogue catalogue = Load();
        EXPECT_TRUE(catalogue.IsComplete());
        EXPECT_EQ(catalogue.GetStatistics().filesSeen, 3);
        EXPECT_EQ(catalogue.GetStatistics().filesScanned, isFirst ? 3 : 0);
        EXPECT_EQ(catalogue.GetStatistics().pluginsLoaded, isFirst ? 5 : 0);
        EXPECT_EQ(catalogue.GetStatistics().workersStarted > 0, isFirst);
        EXPECT_THAT(TypeNames(catalogue, "specimen.plain"), IsEmpty());
        EXPECT_THAT(TypeNames(catalogue, "specimen.yuv"), ElementsAre("YUV", "32BitColor"));
        EXPECT_THAT(TypeNames(catalogue, "specimen.gpu"), ElementsAre("Accelerated", "32BitColor"));
        std::vector<std::string> texts;
        for (const auto& effect : catalogue.Effects()) {
            texts.push_back(ToJSONText(effect.description) + effect.failure);
        }
        ASSERT_EQ(texts.size(), 6u);
        EXPECT_EQ(catalogue.Effects()[3].failure, "crashed with SIGSEGV while being described");
        EXPECT_EQ(catalogue.Effects()[3].description.matchName, "specimen.crash here");
        EXPECT_EQ(catalogue.Effects()[5].failure, "crashed with SIGSEGV while being loaded");
        EXPECT_EQ(catalogue.Effects()[5].description.matchName, "specimen.worse");
        EXPECT_EQ(isFirst ? texts : firstTexts, texts);
        firstTexts = texts;
    }
    mSettings.isRescan = true;
    EXPECT_EQ(Load().GetStatistics().pluginsLoaded, 5);
}

TEST_F(Catalogue, OnlyWhatHasChangedIsLoadedAgain)
{
    Write("one", {"a", "b"});
    Write("two", {"c"});
    Load();
    Write("two", {"c", "d"});
    EffectCatalogue catalogue = Load();
    EXPECT_EQ(catalogue.GetStatistics().filesScanned, 1);
    EXPECT_EQ(catalogue.GetStatistics().pluginsLoaded, 2);
    EXPECT_NE(catalogue.Find("specimen.d"), nullptr);
    support::WriteFile(mFolder / "one.behind", "a library that has come");
    catalogue = Load();
    EXPECT_EQ(catalogue.GetStatistics().filesScanned, 1);
    std::filesystem::remove(mFolder / "two");
    catalogue = Load();
    EXPECT_EQ(catalogue.GetStatistics().filesSeen, 1);
    EXPECT_EQ(catalogue.GetStatistics().filesScanned, 0);
    EXPECT_EQ(catalogue.Find("specimen.c"), nullptr);
}

TEST_F(Catalogue, TypesThatAPluginHasLostAreNotReadBack)
{
    Write("file", {"changing: accelerated yuv420 bgra32f"});
    EXPECT_THAT(TypeNames(Load(), "specimen.changing"), ElementsAre("Accelerated", "YUV", "32BitColor"));
    Write("file", {"changing: bgra32f"});
    EXPECT_THAT(TypeNames(Load(), "specimen.changing"), ElementsAre("32BitColor"));
    EXPECT_THAT(TypeNames(Load(), "specimen.changing"), ElementsAre("32BitColor"));
    Write("file", {"changing: bgra8"});
    Load();
    const EffectCatalogue last = Load();
    EXPECT_THAT(TypeNames(last, "specimen.changing"), IsEmpty());
    EXPECT_EQ(last.GetStatistics().pluginsLoaded, 0);
}

TEST_F(Catalogue, APluginWhoseTypesTheRegistryHasLostIsDescribedAgain)
{
    Write("file", {"kept: yuv420", "back\\slash: yuv420", "lost: yuv420"});
    Load();
    kiocore::utility::RegistryKey key;
    ASSERT_EQ(key.Open(kiocore::utility::kRegistryRoot_CurrentUser, TypeCacheKey()), 0);
    ASSERT_EQ(key.DeleteKey("specimen.lost"), 0);
    const EffectCatalogue again = Load();
    EXPECT_EQ(again.GetStatistics().filesScanned, 0);
    EXPECT_EQ(again.GetStatistics().pluginsLoaded, 1);
    EXPECT_THAT(TypeNames(again, "specimen.lost"), ElementsAre("YUV"));
    const EffectCatalogue third = Load();
    EXPECT_EQ(third.GetStatistics().pluginsLoaded, 0);
    EXPECT_THAT(TypeNames(third, "specimen.back\\slash"), ElementsAre("YUV"));
}

TEST_F(Catalogue, TheFirstOfEqualMatchNamesCounts)
{
    Write("first", {"twin: yuv420"});
    Write("second", {"twin: bgra32f"});
    for (const char* start : {"first start", "second start"}) {
        SCOPED_TRACE(start);
        const EffectCatalogue catalogue = Load();
        ASSERT_EQ(catalogue.Effects().size(), 2u);
        EXPECT_THAT(TypeNames(catalogue, "specimen.twin"), ElementsAre("YUV"));
        EXPECT_THAT(catalogue.Effects()[0].description.refusal, IsEmpty());
        EXPECT_THAT(catalogue.Effects()[1].description.refusal, HasSubstr((mFolder / "first").native()));
        EXPECT_THAT(catalogue.Effects()[1].types, IsEmpty());
    }
}

TEST_F(Catalogue, BrokenOffItKeepsWhatIsDoneAndGoesOnNextTime)
{
    mSettings.worker.workers = 1;
    Write("done", {"a"});
    Write("stuck", {"b", "hang here"});
    bool isDone = false;
    const EffectCatalogue broken = EffectCatalogue::Load(
        mSettings, [&](int, int, const std::string& inName) { isDone = isDone || inName == "b"; },
        {[&] { return isDone; }, -1});
    EXPECT_FALSE(broken.IsComplete());
    EXPECT_NE(broken.Find("specimen.a"), nullptr);
    EXPECT_EQ(broken.Find("specimen.b"), nullptr) << "half a file is none";
    Write("stuck", {"b", "c"});
    const EffectCatalogue next = Load();
    EXPECT_TRUE(next.IsComplete());
    EXPECT_EQ(next.GetStatistics().filesScanned, 1);
    EXPECT_NE(next.Find("specimen.a"), nullptr);
    EXPECT_NE(next.Find("specimen.c"), nullptr);
}

TEST_F(Catalogue, ToldToKeepNothingItWritesNothing)
{
    Write("file", {"yuv: yuv420"});
    mSettings.keepsNothing = true;
    EXPECT_THAT(TypeNames(Load(), "specimen.yuv"), ElementsAre("YUV"));
    EXPECT_FALSE(std::filesystem::exists(mFolder / "cache"));
    EXPECT_FALSE(std::filesystem::exists(mFolder / "registry.json"));
}

TEST_F(Catalogue, ProgressCountsUpToAllThatThereIs)
{
    Write("file", {"a", "b", "c"});
    std::vector<std::pair<int, int>> steps;
    EffectCatalogue::Load(
        mSettings, [&](int inDone, int inTotal, const std::string&) { steps.emplace_back(inDone, inTotal); },
        {});
    EXPECT_THAT(steps, ElementsAre(std::pair(1, 4), std::pair(2, 4), std::pair(3, 4), std::pair(4, 4)));
}

} // namespace
} // namespace trhost::effects
