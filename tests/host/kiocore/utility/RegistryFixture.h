#pragma once

#include "support/TemporaryFolder.h"

#include <kiocore/utility/RegistryKey.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kiocore::utility {

/// A registry of its own in a temporary folder, whose inner folder the first change makes.
class RegistryFixture : public testing::Test {
protected:
    RegistryFixture() { SetRegistryFile(support::UTF16(mFile)); }
    ~RegistryFixture() override { SetRegistryFile({}); }

    static RegistryKey Made(std::string_view inPath)
    {
        RegistryKey key;
        EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, inPath), 0) << inPath;
        return key;
    }
    static bool Exists(std::string_view inPath)
    {
        RegistryKey key;
        return key.Open(kRegistryRoot_CurrentUser, inPath) == 0;
    }
    static std::vector<std::string> SubKeys(const RegistryKey& inKey)
    {
        std::vector<std::string> names{"untouched"};
        inKey.GetSubKeyNames(names);
        return names;
    }
    static std::vector<std::string> Values(const RegistryKey& inKey)
    {
        std::vector<std::string> names{"untouched"};
        inKey.GetValueNames(names);
        return names;
    }

    support::TemporaryFolder mFolder;
    const std::filesystem::path mFile = mFolder / "settings/registry.json";
};

} // namespace kiocore::utility
