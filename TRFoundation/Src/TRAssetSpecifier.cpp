#include <TR/TRAssetSpecifier.h>

#include <BE/Backend.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiomediatypes/TickTimeJSON.h>

#include <map>
#include <string>

namespace TR {

AssetSpecifier::AssetSpecifier(const UTF16String& inPath, const TickTime& inInPoint,
                               const TickTime& inOutPoint)
    : mPath(inPath), mInPoint(inInPoint), mOutPoint(inOutPoint)
{}
AssetSpecifier::~AssetSpecifier() = default;
AssetSpecifier::AssetSpecifier(const AssetSpecifier&) = default;
AssetSpecifier::AssetSpecifier(AssetSpecifier&&) noexcept = default;
AssetSpecifier& AssetSpecifier::operator=(const AssetSpecifier&) = default;
AssetSpecifier& AssetSpecifier::operator=(AssetSpecifier&&) noexcept = default;

std::vector<UTF16String> ConvertToPathVector(const std::vector<AssetSpecifier>& inSpecifiers)
{
    std::vector<UTF16String> paths;
    paths.reserve(inSpecifiers.size());
    for (const AssetSpecifier& specifier : inSpecifiers) {
        paths.push_back(specifier.GetPath());
    }
    return paths;
}

std::vector<AssetSpecifier> ConvertFromPathVector(const std::vector<UTF16String>& inPaths)
{
    std::vector<AssetSpecifier> specifiers;
    specifiers.reserve(inPaths.size());
    for (const UTF16String& path : inPaths) {
        specifiers.emplace_back(path, TickTime(), TickTime());
    }
    return specifiers;
}

UTF16String GetAssetPath(const InterfaceRef<BE::IProjectItem>& inItem)
{
    if (const InterfaceRef<BE::IProperties> properties = inItem) {
        std::string path;
        if (properties->GetValue(BE::kProjectItemOriginalAssetNamePathPropertyKey, path) >= 0 &&
            !path.empty()) {
            return kiocore::filesupport::FromNative(path);
        }
    }
    if (const InterfaceRef<BE::IClipProjectItem> clip = inItem) {
        if (const auto media = BE::MasterClipUtils::GetMedia(clip->GetMasterClip(), 0)) {
            return media->GetFilePath();
        }
    }
    return {};
}

void UpdateProjectItemsWithInOutPoints(const std::vector<InterfaceRef<BE::IProjectItem>>& inItems,
                                       const std::vector<AssetSpecifier>& inSpecifiers)
{
    std::multimap<UTF16String, InterfaceRef<BE::IProjectItem>> itemsByPath;
    for (const auto& item : inItems) {
        if (UTF16String path = GetAssetPath(item); !path.empty()) {
            itemsByPath.emplace(std::move(path), item);
        }
    }
    for (const AssetSpecifier& specifier : inSpecifiers) {
        const auto [first, last] = itemsByPath.equal_range(specifier.GetPath());
        for (auto at = first; at != last; ++at) {
            BE::ProjectItemUtils::UpdateProjectItemWithInOutPoints(at->second, specifier.GetInPoint(),
                                                                   specifier.GetOutPoint(), false);
        }
    }
}

} // namespace TR

namespace kiocore::serialization {
namespace {

constexpr const char* kPath = "Path";
constexpr const char* kInPoint = "InPoint";
constexpr const char* kOutPoint = "OutPoint";

} // namespace

JSON JSONConvert<TR::AssetSpecifier>::ToJSON(const TR::AssetSpecifier& inSpecifier)
{
    JSONObject object;
    AddMember(object, kPath, inSpecifier.GetPath());
    AddMember(object, kInPoint, inSpecifier.GetInPoint());
    AddMember(object, kOutPoint, inSpecifier.GetOutPoint());
    return object;
}

TR::AssetSpecifier JSONConvert<TR::AssetSpecifier>::FromJSON(const JSON& inValue)
{
    utility::UTF16String path;
    TR::TickTime inPoint;
    TR::TickTime outPoint;
    const auto* object = boost::any_cast<JSONObject>(&inValue);
    if (object && ReadMember(*object, kPath, path)) {
        ReadMember(*object, kInPoint, inPoint);
        ReadMember(*object, kOutPoint, outPoint);
    }
    return {path, inPoint, outPoint};
}

} // namespace kiocore::serialization
