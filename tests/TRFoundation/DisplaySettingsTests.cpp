#include "support/TraceRecorder.h"

#include <TR/TRDisplaySettings.h>

#include <BE/Backend.h>
#include <PRQ/ApplicationType.h>
#include <kiocore/classref/ClassFactory.h>
#include <kioui_theme/Theme.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>

namespace TR {
namespace {

using kiocore::classref::ClassFactory;
using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using MF::IDisplaySettings;

const kiocore::Guid kClassID("D16CD309-25A4-42DE-B404-E0CB1340B2F1");

InterfaceRef<IDisplaySettings> MakeSettings()
{
    InterfaceRef<UnknownBase> instance;
    TRDisplaySettings::CreateInstanceRef(instance);
    return instance;
}

class DisplaySettingsTest : public ::testing::Test {
protected:
    ~DisplaySettingsTest() override
    {
        PRQ::SetApplicationType(0);
        for (const auto& key :
             {BE::kPrefsEnableExtendedDynamicRangeMonitoring, BE::kPrefsEnableDisplayColorManagement}) {
            mProperties->Remove(key);
        }
        kioui::ui::SetDefaultThemeProvider({});
    }

    const InterfaceRef<BE::IProperties> mProperties = BE::GetBackend()->GetProperties();
    const InterfaceRef<IDisplaySettings> mSettings = MakeSettings();
};

TEST_F(DisplaySettingsTest, SwitchesAreThePreferencesOrTheirDefaults)
{
    const struct {
        const char* name;
        int applicationType;
        std::optional<bool> extendedRange;
        std::optional<bool> colorManagement;
        bool expectedExtendedRange;
        bool expectedColorManagement;
    } kCases[] = {
        {"nothing set", 0, {}, {}, true, true},
        {"type 4", 4, {}, {}, true, true},
        {"type 5 has its own default", 5, {}, {}, false, true},
        {"type 6", 6, {}, {}, true, true},
        {"the user wants it for type 5 too", 5, true, {}, true, true},
        {"both off", 0, false, false, false, false},
        {"one off does not touch the other", 5, {}, false, false, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        PRQ::SetApplicationType(test.applicationType);
        const auto set = [&](const BE::ImmutableString& inKey, std::optional<bool> inValue) {
            mProperties->Remove(inKey);
            if (inValue) {
                mProperties->SetBool(inKey, *inValue);
            }
        };
        set(BE::kPrefsEnableExtendedDynamicRangeMonitoring, test.extendedRange);
        set(BE::kPrefsEnableDisplayColorManagement, test.colorManagement);
        EXPECT_EQ(mSettings->IsExtendedDynamicRangeEnabled(), test.expectedExtendedRange);
        EXPECT_EQ(mSettings->IsDisplayColorManagementEnabled(), test.expectedColorManagement);
    }
}

/// A back end whose preferences cannot be had.
class BareBackend final : public UnknownBase, public BE::IBackend {
public:
    InterfaceRef<BE::IPreferences> GetPreferences() override { return {}; }
    InterfaceRef<BE::IProperties> GetProperties() override { return {}; }
};

TEST_F(DisplaySettingsTest, WithoutPreferencesTheDefaultsCount)
{
    mProperties->SetBool(BE::kPrefsEnableExtendedDynamicRangeMonitoring, false);
    mProperties->SetBool(BE::kPrefsEnableDisplayColorManagement, false);
    for (const InterfaceRef<BE::IBackend>& backend :
         {InterfaceRef<BE::IBackend>(), InterfaceRef<BE::IBackend>(MakeObject<BareBackend>())}) {
        const BE::ScReplaceBackend replacement(backend);
        EXPECT_TRUE(mSettings->IsExtendedDynamicRangeEnabled());
        EXPECT_TRUE(mSettings->IsDisplayColorManagementEnabled());
    }
    EXPECT_FALSE(mSettings->IsExtendedDynamicRangeEnabled());
}

TEST_F(DisplaySettingsTest, ModesAreFixed)
{
    EXPECT_EQ(mSettings->GetZoomInTextureFilteringMode(), 0);
    EXPECT_EQ(mSettings->GetZoomOutTextureFilteringMode(), 1);
    EXPECT_EQ(mSettings->GetBufferScalingMode(), 0);
}

class OneColor final : public UnknownBase, public kioui::ui::IThemeProvider {
public:
    explicit OneColor(kioui::skins::Color inColor) : mColor(inColor) {}
    kioui::skins::Color GetColor(kioui::skins::ColorRole) const override { return mColor; }

private:
    const kioui::skins::Color mColor;
};

TEST_F(DisplaySettingsTest, TheFillIsTheThemesBackgroundInBytes)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kHuge = std::numeric_limits<float>::max();
    const struct {
        const char* name;
        kioui::skins::Color color;
        MF::SwapChainFillColor expected;
    } kCases[] = {
        {"ends and middle, each in its channel", {1.0f, 0.5f, -0.01f}, {255, 128, 0}},
        {"just below zero", {-0.001f, 0, 0.001f}, {0, 0, 0}},
        {"halves go up", {0.5f / 255, 1.5f / 255, 0.499f / 255}, {1, 2, 0}},
        {"beyond the range", {1.01f, kHuge, -kHuge}, {255, 255, 0}},
        {"not-a-number is black", {kNaN, 1, kNaN}, {0, 255, 0}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        kioui::ui::SetDefaultThemeProvider(MakeObject<OneColor>(test.color));
        const MF::SwapChainFillColor fill = mSettings->GetSwapChainFillColor();
        EXPECT_EQ(int(fill.red), int(test.expected.red));
        EXPECT_EQ(int(fill.green), int(test.expected.green));
        EXPECT_EQ(int(fill.blue), int(test.expected.blue));
    }
    kioui::ui::SetDefaultThemeProvider({});
    const int dark = mSettings->GetSwapChainFillColor().red;
    kioui::ui::SetDefaultThemeProvider(GetThemeProvider(kioui::ui::Theme::kLight));
    EXPECT_LT(dark, 64);
    EXPECT_GT(mSettings->GetSwapChainFillColor().red, 192);
}

TEST_F(DisplaySettingsTest, AnswersItsInterfaceOnly)
{
    InterfaceRef<UnknownBase> instance;
    TRDisplaySettings::CreateInstanceRef(instance);
    EXPECT_EQ(kiocore::classref::GuidOf<IDisplaySettings>(), kClassID);
    EXPECT_TRUE(instance->QueryMap(IDisplaySettings::InterfaceID()));
    EXPECT_FALSE(instance->QueryMap(BE::IProperties::InterfaceID()));
    auto& settings = dynamic_cast<TRDisplaySettings&>(*instance);
    EXPECT_EQ(InterfaceRef<UnknownBase>(settings), instance);
    TRDisplaySettings loose;
    EXPECT_FALSE(InterfaceRef<UnknownBase>(loose));
}

/// What a host might have registered before.
class HostsOwn final : public UnknownBase, public IDisplaySettings {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IDisplaySettings::InterfaceID() ? static_cast<IDisplaySettings*>(this)
                                                                : nullptr;
    }
    bool IsExtendedDynamicRangeEnabled() override { return false; }
    bool IsDisplayColorManagementEnabled() override { return false; }
    int GetZoomInTextureFilteringMode() override { return 7; }
    int GetZoomOutTextureFilteringMode() override { return 7; }
    int GetBufferScalingMode() override { return 7; }
    MF::SwapChainFillColor GetSwapChainFillColor() override { return {}; }
};

// Registrations stay for the process's life, so one test sees them come.
TEST_F(DisplaySettingsTest, RegisteredOnceAndNeverOverTheHosts)
{
    const support::TraceRecorder trace("Host");
    InterfaceRef<UnknownBase> none;
    EXPECT_LT(ClassFactory::CreateInstanceRef(kClassID, none), 0);
    EXPECT_FALSE(none);
    RegisterTRDisplaySettingsClass();
    RegisterTRDisplaySettingsClass();
    EXPECT_EQ(trace.CountContaining(
                  "ClassFactory::RegisterClass(d16cd309-25a4-42de-b404-e0cb1340b2f1, \"classID\", "
                  "\"TRDisplaySettings\")"),
              1);
    InterfaceRef<UnknownBase> instance;
    EXPECT_EQ(ClassFactory::CreateInstanceRef(kClassID, instance), 0);
    EXPECT_EQ(InterfaceRef<IDisplaySettings>(instance)->GetZoomOutTextureFilteringMode(), 1);

    ClassFactory::RegisterClass(kClassID, "classID", "HostsOwn", [](InterfaceRef<UnknownBase>& outObject) {
        outObject = MakeObject<HostsOwn>();
    });
    RegisterTRDisplaySettingsClass();
    EXPECT_EQ(ClassFactory::CreateInstanceRef(kClassID, instance), 0);
    EXPECT_EQ(InterfaceRef<IDisplaySettings>(instance)->GetZoomOutTextureFilteringMode(), 7);

    // A factory that makes nothing is as good as none, and leaves what was there.
    ClassFactory::RegisterClass(kClassID, "classID", "Nothing",
                                [](InterfaceRef<UnknownBase>& outObject) { outObject.Reset(); });
    EXPECT_LT(ClassFactory::CreateInstanceRef(kClassID, instance), 0);
    EXPECT_TRUE(instance);
}

} // namespace
} // namespace TR
