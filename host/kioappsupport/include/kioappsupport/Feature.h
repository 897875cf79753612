#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kioappsupport::feature {

enum class FeatureStage { kPrototype = 0, kAlpha = 1, kPrivateBeta = 2, kBeta = 3, kReleased = 4 };
/// Whether a feature is listed for the user in all applications of the suite or in none but its own.
enum class VisibilityInAllClientApps { kHidden = 0, kVisible = 1 };
/// When a change of its state takes effect.
enum class EnablementChanges { kAtOnce = 0, kAfterRestart = 1 };
enum class DefaultEnablement { kOff = 0, kOn = 1 };

/// A feature that can be switched on or off as a whole. Declared as a static object by the library that has
/// it; known from then on, until the object goes. Of several with one name, the one declared last counts.
///
/// Threading: declared while libraries load; the rest on any thread.
class KIO_EXPORT BetaFeature {
public:
    /// @param inName  contract with configuration files: "Vre.PluginManagerCrashDetection". The texts are
    ///     literals, "$$$/Key=English".
    BetaFeature(const char* inName, const char* inDisplayName, const char* inDescription,
                FeatureStage inStage, VisibilityInAllClientApps inVisibility, EnablementChanges inChanges,
                DefaultEnablement inDefault);
    ~BetaFeature();
    BetaFeature(const BetaFeature&) = delete;
    BetaFeature& operator=(const BetaFeature&) = delete;

    const char* Name() const noexcept { return mName; }
    kiocore::utility::UTF16String DisplayName() const;
    kiocore::utility::UTF16String Description() const;
    FeatureStage Stage() const noexcept { return mStage; }
    VisibilityInAllClientApps Visibility() const noexcept { return mVisibility; }
    EnablementChanges Changes() const noexcept { return mChanges; }
    DefaultEnablement Default() const noexcept { return mDefault; }

private:
    friend std::vector<struct FeatureInfo> GetFeatures();

    const char* const mName;
    const char* const mDisplayName;
    const char* const mDescription;
    const FeatureStage mStage;
    const VisibilityInAllClientApps mVisibility;
    const EnablementChanges mChanges;
    const DefaultEnablement mDefault;
};

/// What SetFeatureEnabled said; else the feature's default; false for a name that nobody declared.
KIO_EXPORT bool IsFeatureEnabled(std::string_view inName);
/// The host's configuration speaks; it may speak before the feature's library is loaded.
/// Who read a feature's state once for the process does not see later changes.
KIO_EXPORT void SetFeatureEnabled(std::string_view inName, bool inEnabled);
/// Back to the default.
KIO_EXPORT void ResetFeature(std::string_view inName);

/// One declared feature as a list shows it.
struct FeatureInfo {
    std::string name;
    kiocore::utility::UTF16String displayName;
    FeatureStage stage;
    bool isEnabled;
    bool isDefault; ///< nobody has set it
};
/// All declared features by name.
KIO_EXPORT std::vector<FeatureInfo> GetFeatures();

} // namespace kioappsupport::feature
