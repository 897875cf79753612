#include <kioappsupport/Feature.h>

#include <kiocore/config/Localizer.h>
#include <kiocore/debug/Trace.h>

#include <map>
#include <mutex>

namespace kioappsupport::feature {

using kiocore::config::Localizer;

namespace {

/// What was declared and what was said of it. Two things, as the host's configuration may speak first.
struct Registry {
    std::mutex lock; // guards the members below
    // Never an empty list. The last one of a name counts: the others are of libraries loaded before.
    std::map<std::string, std::vector<const BetaFeature*>, std::less<>> declared;
    std::map<std::string, bool, std::less<>> said;

    bool IsEnabled(std::string_view inName) const
    {
        if (const auto found = said.find(inName); found != said.end()) {
            return found->second;
        }
        const auto found = declared.find(inName);
        return found != declared.end() && found->second.back()->Default() == DefaultEnablement::kOn;
    }
};

/// Never destroyed: features of other libraries go after ours may have.
Registry& GetRegistry()
{
    static Registry* const registry = new Registry;
    return *registry;
}

} // namespace

BetaFeature::BetaFeature(const char* inName, const char* inDisplayName, const char* inDescription,
                         FeatureStage inStage, VisibilityInAllClientApps inVisibility,
                         EnablementChanges inChanges, DefaultEnablement inDefault)
    : mName(inName), mDisplayName(inDisplayName), mDescription(inDescription), mStage(inStage),
      mVisibility(inVisibility), mChanges(inChanges), mDefault(inDefault)
{
    Registry& registry = GetRegistry();
    std::lock_guard lock(registry.lock);
    registry.declared[mName].push_back(this);
}

BetaFeature::~BetaFeature()
{
    Registry& registry = GetRegistry();
    std::lock_guard lock(registry.lock);
    const auto found = registry.declared.find(mName);
    std::erase(found->second, this);
    if (found->second.empty()) {
        registry.declared.erase(found);
    }
}

kiocore::utility::UTF16String BetaFeature::DisplayName() const
{
    return Localizer::GetText(mDisplayName);
}

kiocore::utility::UTF16String BetaFeature::Description() const
{
    return Localizer::GetText(mDescription);
}

bool IsFeatureEnabled(std::string_view inName)
{
    KIO_HOST_CALL("kioappsupport::feature::IsFeatureEnabled", inName);
    Registry& registry = GetRegistry();
    std::lock_guard lock(registry.lock);
    return registry.IsEnabled(inName);
}

void SetFeatureEnabled(std::string_view inName, bool inEnabled)
{
    Registry& registry = GetRegistry();
    std::lock_guard lock(registry.lock);
    registry.said.insert_or_assign(std::string(inName), inEnabled);
}

void ResetFeature(std::string_view inName)
{
    Registry& registry = GetRegistry();
    std::lock_guard lock(registry.lock);
    if (const auto found = registry.said.find(inName); found != registry.said.end()) {
        registry.said.erase(found);
    }
}

std::vector<FeatureInfo> GetFeatures()
{
    std::vector<FeatureInfo> features;
    std::vector<std::string> displayNames;
    {
        Registry& registry = GetRegistry();
        std::lock_guard lock(registry.lock);
        for (const auto& [name, declared] : registry.declared) {
            const BetaFeature& feature = *declared.back();
            features.push_back(
                {name, {}, feature.Stage(), registry.IsEnabled(name), registry.said.count(name) == 0});
            displayNames.emplace_back(feature.mDisplayName);
        }
    }
    // Translated unlocked, from copies: a feature may go meanwhile with its library's literals.
    for (std::size_t i = 0; i < features.size(); ++i) {
        features[i].displayName = Localizer::GetText(displayNames[i]);
    }
    return features;
}

} // namespace kioappsupport::feature
