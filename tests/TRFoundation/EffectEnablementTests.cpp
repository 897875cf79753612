#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <TR/EffectEnablement.h>
#include <ZOL/RegistryBaseKey.h>
#include <kiocore/utility/RegistryKey.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

namespace TR {
namespace {

using kiocore::utility::kRegistryRoot_CurrentUser;
using kiocore::utility::RegistryKey;
using kiocore::utility::SetRegistryFile;
using testing::ElementsAre;
using testing::IsEmpty;

class EffectEnablement : public testing::Test {
protected:
    ~EffectEnablement() override { SetGlobalEffectFilter({}); }
};

TEST_F(EffectEnablement, TheFilterDecidesWhileThereIsOne)
{
    EXPECT_TRUE(IsEffectEnabled("test.a"));
    EffectFilter filter = [](const ImmutableString& inMatchName) { return inMatchName != "test.a"; };
    SetGlobalEffectFilter(filter);
    filter = nullptr; // the filter in use is a copy
    EXPECT_FALSE(IsEffectEnabled("test.a"));
    EXPECT_TRUE(IsEffectEnabled("test.b"));
    SetGlobalEffectFilter([](const ImmutableString&) { return false; });
    EXPECT_FALSE(IsEffectEnabled("test.b"));
    SetGlobalEffectFilter({});
    EXPECT_TRUE(IsEffectEnabled("test.a"));
}

TEST_F(EffectEnablement, AFilterThatGoesFindsTheNewOneInPlace)
{
    bool enabledAtItsEnd = false;
    std::shared_ptr<void> atItsEnd(nullptr, [&](void*) { enabledAtItsEnd = IsEffectEnabled("test.a"); });
    SetGlobalEffectFilter([kept = std::move(atItsEnd)](const ImmutableString&) { return false; });
    SetGlobalEffectFilter({});
    EXPECT_TRUE(enabledAtItsEnd);
}

class EffectTypeCache : public testing::Test {
protected:
    EffectTypeCache() { SetRegistryFile(mFolder.UTF16("registry.json")); }
    ~EffectTypeCache() override { SetRegistryFile({}); }

    static std::string PathOf(const std::string& inCacheName)
    {
        return kiocore::utility::ToUTF8(ZOL::GetRegistryBaseKey()) + "PluginEffectTypeCache\\" + inCacheName;
    }
    static RegistryKey Entry(const std::string& inCacheName)
    {
        RegistryKey key;
        EXPECT_EQ(key.Open(kRegistryRoot_CurrentUser, PathOf(inCacheName)), 0) << inCacheName;
        return key;
    }
    static std::vector<std::string> NamesOf(const std::vector<InterfaceRef<IEffectType>>& inTypes)
    {
        std::vector<std::string> names;
        for (const auto& type : inTypes) {
            names.push_back(kiocore::utility::ToUTF8(type->GetName()));
        }
        return names;
    }
    static std::vector<std::string> Read(const char* inCacheName)
    {
        std::vector<InterfaceRef<IEffectType>> types;
        EXPECT_TRUE(ReadFromRegistry(inCacheName, types)) << inCacheName;
        return NamesOf(types);
    }

    support::TemporaryFolder mFolder;
};

TEST_F(EffectTypeCache, ListsComeBackInTheirOrder)
{
    const auto accelerated = GetAcceleratedTimeEffectType();
    const auto yuv = GetYUVEffectType();
    const auto deep = Get32BitEffectType();
    const struct {
        const char* name;
        std::vector<InterfaceRef<IEffectType>> types;
    } kCases[] = {
        {"none", {}},
        {"one", {deep}},
        {"another order than the names are tried in", {yuv, accelerated}},
        {"all", {accelerated, deep, yuv}},
        {"one twice", {yuv, yuv}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        WriteToRegistry(test.name, test.types);
        EXPECT_EQ(Read(test.name), NamesOf(test.types));
    }
    std::vector<InterfaceRef<IEffectType>> types{yuv};
    ASSERT_TRUE(ReadFromRegistry("one", types));
    EXPECT_THAT(NamesOf(types), ElementsAre("YUV", "32BitColor")) << "added to what was there";
    EXPECT_FALSE(types[1] == deep) << "a new instance";
    EXPECT_EQ(types[1]->GetGuid(), deep->GetGuid());
}

TEST_F(EffectTypeCache, KeepsNumbersAndNamesThatOthersCanRead)
{
    WriteToRegistry("two", {GetYUVEffectType(), GetAcceleratedTimeEffectType()});
    WriteToRegistry("none", {});
    std::uint32_t version = 0;
    std::string text;
    std::vector<std::string> names;
    RegistryKey two = Entry("two");
    EXPECT_EQ(two.GetUInt32Value("Version", version), 0);
    EXPECT_EQ(version, 3u);
    EXPECT_EQ(two.GetStringValue("Effect Types1", text), 0);
    EXPECT_EQ(text, "Accelerated");
    EXPECT_EQ(two.GetValueNames(names), 0);
    EXPECT_THAT(names, ElementsAre("Effect Types0", "Effect Types1", "Version"));
    EXPECT_EQ(Entry("none").GetStringValue("Effect Types0", text), 0);
    EXPECT_EQ(text, "None");
}

TEST_F(EffectTypeCache, TheEndOfAnEarlierLongerListStays)
{
    WriteToRegistry("plug-in", {GetYUVEffectType(), Get32BitEffectType(), GetAcceleratedTimeEffectType()});
    WriteToRegistry("plug-in", {GetAcceleratedTimeEffectType()});
    EXPECT_THAT(Read("plug-in"), ElementsAre("Accelerated", "32BitColor", "Accelerated"));
    WriteToRegistry("plug-in", {});
    EXPECT_THAT(Read("plug-in"), ElementsAre("32BitColor", "Accelerated")) << "\"None\" is passed over";
}

TEST_F(EffectTypeCache, ReadingWhatWasNeverWrittenLeavesAnEmptyKeyBehind)
{
    const auto kept = GetYUVEffectType();
    std::vector<InterfaceRef<IEffectType>> types{kept};
    EXPECT_FALSE(ReadFromRegistry("unknown", types));
    ASSERT_EQ(types.size(), 1u);
    EXPECT_TRUE(types[0] == kept);
    std::vector<std::string> names{"untouched"};
    EXPECT_EQ(Entry("unknown").GetValueNames(names), 0);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(EffectTypeCache, OnlyAnEntryOfThisVersionCounts)
{
    for (std::uint32_t version : {0u, 2u, 4u}) {
        WriteToRegistry("plug-in", {GetYUVEffectType()});
        Entry("plug-in").SetUInt32Value("Version", version);
        std::vector<InterfaceRef<IEffectType>> types;
        EXPECT_FALSE(ReadFromRegistry("plug-in", types)) << version;
        EXPECT_THAT(types, IsEmpty());
    }
    WriteToRegistry("plug-in", {GetYUVEffectType()});
    Entry("plug-in").SetStringValue("Version", "3");
    std::vector<InterfaceRef<IEffectType>> types;
    EXPECT_FALSE(ReadFromRegistry("plug-in", types)) << "a text is no version";
}

TEST_F(EffectTypeCache, UnknownNamesArePassedOverAndTheFirstMissingNumberEndsTheList)
{
    WriteToRegistry("plug-in", {});
    RegistryKey entry = Entry("plug-in");
    const char* const kNames[] = {"Someone else's", "YUV", "yuv", "Accelerated ", "", "32BitColor"};
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        entry.SetStringValue("Effect Types" + std::to_string(i), kNames[i]);
    }
    entry.SetStringValue("Effect Types7", "YUV");
    EXPECT_THAT(Read("plug-in"), ElementsAre("YUV", "32BitColor"));
    entry.SetUInt32Value("Effect Types1", 1);
    EXPECT_THAT(Read("plug-in"), IsEmpty()) << "a number is no text, and so missing";
}

TEST_F(EffectTypeCache, WhatItAsksOfTheRegistry)
{
    const support::TraceRecorder trace("Host");
    std::vector<InterfaceRef<IEffectType>> types;
    WriteToRegistry("p", {GetYUVEffectType()});
    ReadFromRegistry("p", types);
    static const std::string kKey = "kiocore::utility::RegistryKey::";
    std::vector<std::string> calls;
    for (const std::string& line : trace.Lines()) {
        if (line.starts_with(kKey)) {
            calls.push_back(line.substr(kKey.size()));
        }
    }
    static const std::string kPath =
        R"((0, "Software\\Halcyon\\Media Host\\14.0\\PluginEffectTypeCache\\p"))";
    EXPECT_THAT(calls, ElementsAre("Open" + kPath, "Create" + kPath, R"(SetUInt32Value("Version", 3))",
                                   R"(SetStringValue("Effect Types0", "YUV"))", "Open" + kPath,
                                   R"(GetUInt32Value("Version"))", R"(GetStringValue("Effect Types0"))",
                                   R"(GetStringValue("Effect Types1"))"));
}

TEST_F(EffectTypeCache, AnEntryIsSavedAtOnce)
{
    const support::FaultyFileCalls calls;
    WriteToRegistry("p", {GetYUVEffectType(), Get32BitEffectType(), GetAcceleratedTimeEffectType()});
    EXPECT_THAT(calls.Names(), testing::Contains("Rename").Times(1));
}

TEST_F(EffectTypeCache, ARegistryThatFailsIsAsOneWithoutEntries)
{
    const auto writeAndRead = [] {
        std::vector<InterfaceRef<IEffectType>> types;
        WriteToRegistry("p", {GetYUVEffectType()});
        return ReadFromRegistry("p", types) || !types.empty();
    };
    {
        support::FaultyFileCalls calls;
        calls.FailCalls("Open", EACCES);
        EXPECT_FALSE(writeAndRead());
    }
    EXPECT_FALSE(std::filesystem::exists(mFolder / "registry.json"));
    support::WriteFile(mFolder / "registry.json", "damaged");
    EXPECT_FALSE(writeAndRead());
    EXPECT_EQ(support::ReadFile(mFolder / "registry.json"), "damaged");
}

} // namespace
} // namespace TR
