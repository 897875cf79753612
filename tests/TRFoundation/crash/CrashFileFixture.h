#pragma once

#include <kioappsupport/Feature.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/NativePath.h>

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

namespace crash {

/// One preferences folder for the process and for the children that its death tests start, as the path of the
/// crash file is made once for a process.
class PreferencesFolder : public testing::Environment {
public:
    /// @param inFeature  whether detection is on.
    explicit PreferencesFolder(bool inFeature) : mFeature(inFeature) {}

    void SetUp() override
    {
        if (!std::getenv(kVariable)) {
            mFolder = std::make_unique<support::TemporaryFolder>();
            setenv(kVariable, mFolder->Path().c_str(), 1);
        }
        kiocore::filesupport::Dir::SetPrefDir(kiocore::filesupport::FromNative(std::getenv(kVariable)));
        kiocore::config::versioninfo::SetAppShortName(u"Foo (Beta) X");
        kioappsupport::feature::SetFeatureEnabled("Vre.PluginManagerCrashDetection", mFeature);
    }
    void TearDown() override { mFolder.reset(); }

    static std::string CrashFile() { return std::string(std::getenv(kVariable)) + "/FooBetaXCrash.json"; }

private:
    static constexpr const char* kVariable = "CRASH_TESTS_PREFERENCES";
    const bool mFeature;
    std::unique_ptr<support::TemporaryFolder> mFolder;
};

/// Empty when there is no such file.
inline std::optional<std::string> Contents(const std::string& inPath = PreferencesFolder::CrashFile())
{
    std::ifstream file(inPath, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

inline void Write(const std::string& inText)
{
    std::ofstream(PreferencesFolder::CrashFile(), std::ios::binary) << inText;
}

/// Each test begins and ends without a crash file. Death tests run in a process of their own, as only the
/// first report of a process is written.
class CrashFileTest : public testing::Test {
protected:
    CrashFileTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    void TearDown() override { std::filesystem::remove(PreferencesFolder::CrashFile()); }
};

} // namespace crash
