#include "ProjectFormat.h"
#include "ProjectModel.h"

#include <kiocore/serialization/JSONConvert.h>
#include <kiomediatypes/TickTimeJSON.h>

#include <set>

namespace BE {
namespace {

using namespace kiocore::serialization;

JSON MasterClipToJSON(const MasterClip& inMasterClip)
{
    JSONArray media;
    for (std::size_t i = 0; i < inMasterClip.GetMediaCount(); ++i) {
        const Media& one = Ours<Media>(inMasterClip.GetMedia(i));
        JSONObject stored = one.Kept();
        AddMember(stored, member::kPath, one.GetFilePath());
        media.push_back(std::move(stored));
    }
    JSONObject stored = inMasterClip.Kept();
    AddMember(stored, member::kID, inMasterClip.GetID());
    stored[member::kMedia] = std::move(media);
    return stored;
}

JSON PropertiesToJSON(const Item::Properties& inProperties)
{
    JSONObject stored;
    for (const auto& [name, property] : inProperties) {
        if (const bool* value = std::get_if<bool>(&property)) {
            AddMember(stored, name, *value);
        } else {
            AddMember(stored, name, std::get<UTF16String>(property));
        }
    }
    return stored;
}

class Writer {
public:
    JSON Write(const InterfaceRef<IProject>& inProject)
    {
        const Project& project = Ours<Project>(inProject);
        for (const auto& masterClip : project.mMasterClips) {
            Use(masterClip);
        }
        JSONObject stored = project.mKept;
        AddMember(stored, member::kFormat, std::string(kProjectFormat));
        AddMember(stored, member::kVersion, kProjectVersion);
        stored[member::kRoot] = ItemToJSON(project.GetRootBin());
        stored[member::kMasterClips] = std::move(mMasterClips);
        return stored;
    }

private:
    /// Lists a master clip when it is met first. @return its identifier.
    Guid Use(const InterfaceRef<IMasterClip>& inMasterClip)
    {
        const MasterClip& masterClip = Ours<MasterClip>(inMasterClip);
        if (mListed.insert(masterClip.GetID()).second) {
            mMasterClips.push_back(MasterClipToJSON(masterClip));
        }
        return masterClip.GetID();
    }

    JSON ItemToJSON(const InterfaceRef<IProjectItem>& inItem)
    {
        const Item& item = Ours<Item>(inItem);
        JSONObject stored = item.mKept;
        AddMember(stored, member::kID, item.GetID());
        AddMember(stored, member::kName, item.GetName());
        if (!item.mProperties.empty()) {
            stored[member::kProperties] = PropertiesToJSON(item.mProperties);
        }
        if (const InterfaceRef<IClipProjectItem> clip = inItem) {
            AddMember(stored, member::kKind, std::string(kKind_Clip));
            AddMember(stored, member::kMasterClip, Use(clip->GetMasterClip()));
            AddPoint(stored, member::kInPoint, clip->GetInPoint());
            AddPoint(stored, member::kOutPoint, clip->GetOutPoint());
        } else if (const InterfaceRef<IBinProjectItem> bin = inItem) {
            AddMember(stored, member::kKind, std::string(kKind_Bin));
            JSONArray items;
            for (const auto& within : bin->GetItems()) {
                items.push_back(ItemToJSON(within));
            }
            stored[member::kItems] = std::move(items);
        }
        return stored;
    }

    static void AddPoint(JSONObject& ioStored, const char* inName, TickTime inPoint)
    {
        if (!inPoint.IsUnset()) {
            AddMember(ioStored, inName, inPoint);
        }
    }

    JSONArray mMasterClips;
    std::set<Guid> mListed;
};

} // namespace

JSON ProjectToJSON(const InterfaceRef<IProject>& inProject)
{
    return Writer().Write(inProject);
}

} // namespace BE
