#include "support/TemporaryFolder.h"

#include "effects/scan/PluginFolders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace trhost::effects {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PluginFolders : public testing::Test {
protected:
    ~PluginFolders() override
    {
        for (const char* variable : {"FREI0R_PATH", "LADSPA_PATH"}) {
            unsetenv(variable);
        }
        mHome.empty() ? unsetenv("HOME") : setenv("HOME", mHome.c_str(), 1);
    }
    void Touch(const char* inPath) { support::WriteFile(mFolder / inPath, "x"); }
    std::string Path(const char* inPath) { return (mFolder / inPath).native(); }
    /// The files below the test's own folder, which the machine's may follow.
    std::vector<std::string> Found(const PluginPlaces& inPlaces)
    {
        std::vector<std::string> files;
        for (const PluginFile& file : FindPluginFiles(inPlaces)) {
            if (file.file.rfind(mFolder.Path().native() + "/", 0) == 0) {
                files.push_back(file.technology + " " + file.file.substr(mFolder.Path().native().size() + 1));
            }
        }
        return files;
    }

    support::TemporaryFolder mFolder;
    const std::string mHome = std::getenv("HOME") ? std::getenv("HOME") : "";
};

TEST_F(PluginFolders, TheFirstFolderWinsAndOnlySharedObjectsCount)
{
    for (const char* path :
         {"a/glow.so", "a/readme.txt", "a/sub.so/x", "b/glow.so", "b/blur.so", "b/maker/glow.so",
          "b/maker/warp.so", "b/maker/deeper/no.so", "more/zoom.so", "more/blur.so"}) {
        Touch(path);
    }
    std::filesystem::create_symlink("nowhere", mFolder / "a/broken.so");
    setenv("FREI0R_PATH", (Path("a") + "::" + Path("missing") + ":" + Path("b")).c_str(), 1);
    PluginPlaces places;
    places.frei0rModule = "/engine.so";
    EXPECT_THAT(Found(places), ElementsAre("frei0r a/glow.so", "frei0r b/blur.so", "frei0r b/maker/warp.so"));
    places.moreFrei0rFolders = {Path("more")};
    EXPECT_THAT(Found(places), ElementsAre("frei0r more/blur.so", "frei0r more/zoom.so", "frei0r a/glow.so",
                                           "frei0r b/maker/warp.so"));
    places.frei0rModule.clear();
    EXPECT_THAT(Found(places), IsEmpty());
}

TEST_F(PluginFolders, WithoutTheVariableTheUsersOwnFolderIsLookedThrough)
{
    Touch(".frei0r-1/lib/own.so");
    Touch(".ladspa/own.so");
    setenv("HOME", mFolder.Path().c_str(), 1);
    setenv("LADSPA_PATH", "", 1); // as good as unset
    PluginPlaces places;
    places.frei0rModule = "/frei0r-engine.so";
    places.ladspaModule = "/ladspa-engine.so";
    EXPECT_THAT(Found(places), ElementsAre("frei0r .frei0r-1/lib/own.so", "ladspa .ladspa/own.so"));
    setenv("LADSPA_PATH", Path(".frei0r-1/lib").c_str(), 1);
    EXPECT_THAT(Found(places), ElementsAre("frei0r .frei0r-1/lib/own.so", "ladspa .frei0r-1/lib/own.so"));
}

TEST_F(PluginFolders, TheFiltersOfAvfilterAreInItsModule)
{
    PluginPlaces places;
    places.avfilterModule = Path("trhost_avfilter.so");
    const std::vector<PluginFile> files = FindPluginFiles(places);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].technology, "avfilter");
    EXPECT_EQ(files[0].module, places.avfilterModule);
    EXPECT_EQ(files[0].file, places.avfilterModule);
}

} // namespace
} // namespace trhost::effects
