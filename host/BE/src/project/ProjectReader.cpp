#include "ProjectFormat.h"
#include "ProjectModel.h"

#include <kiocore/serialization/JSONConvert.h>
#include <kiomediatypes/TickTimeJSON.h>

#include <map>
#include <set>

namespace BE {
namespace {

using namespace kiocore::serialization;
using kiocore::classref::MakeObject;

/// Runs inRead, so that what it throws names the member.
template <typename Read>
auto Within(const char* inName, const Read& inRead)
{
    try {
        return inRead();
    } catch (bad_cast_exception& problem) {
        problem.IsWithinMember(inName);
        throw;
    }
}

[[noreturn]] void RefuseMember(const char* inName, std::string inFound, std::string inExpected)
{
    bad_cast_exception problem(std::move(inFound), std::move(inExpected));
    problem.IsWithinMember(inName);
    throw problem;
}

/// An object whose known members are taken out one by one; the rest is kept.
class Members {
public:
    explicit Members(JSON& ioObject)
    {
        (void)AsObject(ioObject);
        mMembers.swap(*boost::any_cast<JSONObject>(&ioObject));
    }

    template <typename T>
    T Take(const char* inName)
    {
        T value = GetMember<T>(mMembers, inName);
        mMembers.erase(inName);
        return value;
    }
    template <typename T>
    T TakeOr(const char* inName, T inDefault)
    {
        ReadMember(mMembers, inName, inDefault);
        mMembers.erase(inName);
        return inDefault;
    }
    /// Calls inRead with each element of an array; an absent one is empty.
    template <typename Read>
    void TakeEach(const char* inName, const Read& inRead)
    {
        const auto found = mMembers.find(inName);
        if (found == mMembers.end()) {
            return;
        }
        Within(inName, [&] {
            (void)AsArray(found->second);
            auto& array = *boost::any_cast<JSONArray>(&found->second);
            for (std::size_t i = 0; i < array.size(); ++i) {
                try {
                    inRead(array[i]);
                } catch (bad_cast_exception& problem) {
                    problem.IsWithinElement(i);
                    throw;
                }
            }
        });
        mMembers.erase(found);
    }
    /// Without a copy, which for bins within bins would be one of everything for each level.
    JSON TakeWhole(const char* inName)
    {
        JSON value;
        const auto found = mMembers.find(inName);
        if (found == mMembers.end()) {
            throw bad_cast_exception("no member " + std::string(inName), "one");
        }
        value.swap(found->second);
        mMembers.erase(found);
        return value;
    }
    KeptMembers TakeRest() { return std::move(mMembers); }

private:
    JSONObject mMembers;
};

Item::Property PropertyFrom(const JSON& inValue)
{
    if (const bool* value = boost::any_cast<bool>(&inValue)) {
        return *value;
    }
    if (const auto* text = boost::any_cast<std::string>(&inValue)) {
        return TextToUTF16(*text);
    }
    throw bad_cast_exception(Describe(inValue), "true, false or a text");
}

Item::Properties TakeProperties(Members& ioMembers)
{
    Item::Properties properties;
    const auto stored = ioMembers.TakeOr<std::map<std::string, JSON>>(member::kProperties, {});
    for (const auto& [name, value] : stored) {
        Within(member::kProperties, [&name = name, &value = value, &properties] {
            Within(name.c_str(), [&] { properties.emplace(name, PropertyFrom(value)); });
        });
    }
    return properties;
}

class Reader {
public:
    InterfaceRef<IProject> Read(JSON& ioDocument)
    {
        Members members(ioDocument);
        CheckFormat(members);
        members.TakeEach(member::kMasterClips, [this](JSON& ioValue) { ReadMasterClip(ioValue); });
        JSON root = members.TakeWhole(member::kRoot);
        const InterfaceRef<IBinProjectItem> bin = Within(member::kRoot, [&] { return ReadItem(root); });
        if (!bin) {
            RefuseMember(member::kRoot, "a clip", "a bin");
        }
        const InterfaceRef<IProject> project = MakeObject<Project>(bin);
        auto& ours = Ours<Project>(project);
        ours.mMasterClips = std::move(mInFileOrder);
        ours.mKept = members.TakeRest();
        return project;
    }

private:
    static void CheckFormat(Members& ioMembers)
    {
        const auto format = ioMembers.Take<std::string>(member::kFormat);
        if (format != kProjectFormat) {
            RefuseMember(member::kFormat, Describe(format), Describe(std::string(kProjectFormat)));
        }
        const auto version = ioMembers.Take<unsigned>(member::kVersion);
        if (version == 0 || version > kProjectVersion) {
            RefuseMember(member::kVersion, Describe(version),
                         "a version from 1 to " + std::to_string(kProjectVersion));
        }
    }

    Guid TakeID(Members& ioMembers)
    {
        const Guid id = ioMembers.Take<Guid>(member::kID);
        if (!mIDs.insert(id).second) {
            RefuseMember(member::kID, id.AsUTF8() + " a second time", "an identifier that nothing else has");
        }
        return id;
    }

    void ReadMasterClip(JSON& ioValue)
    {
        Members members(ioValue);
        const Guid id = TakeID(members);
        std::vector<InterfaceRef<IMedia>> media;
        members.TakeEach(member::kMedia, [&media](JSON& ioMedia) {
            Members ofMedia(ioMedia);
            auto path = ofMedia.Take<UTF16String>(member::kPath);
            media.push_back(MakeObject<Media>(std::move(path), ofMedia.TakeRest()));
        });
        InterfaceRef<IMasterClip> clip = MakeObject<MasterClip>(id, std::move(media), members.TakeRest());
        mMasterClips.emplace(id, clip);
        mInFileOrder.push_back(std::move(clip));
    }

    InterfaceRef<IProjectItem> ReadItem(JSON& ioValue)
    {
        Members members(ioValue);
        const auto kind = members.Take<std::string>(member::kKind);
        const Guid id = TakeID(members);
        auto name = members.Take<UTF16String>(member::kName);
        auto properties = TakeProperties(members);
        InterfaceRef<IProjectItem> item;
        if (kind == kKind_Bin) {
            item = ReadBin(id, std::move(name), members);
        } else if (kind == kKind_Clip) {
            item = ReadClip(id, std::move(name), members);
        } else {
            RefuseMember(member::kKind, Describe(kind), "bin or clip");
        }
        Item& ours = Ours<Item>(item);
        ours.mProperties = std::move(properties);
        ours.mKept = members.TakeRest();
        return item;
    }

    InterfaceRef<IProjectItem> ReadBin(const Guid& inID, UTF16String inName, Members& ioMembers)
    {
        InterfaceRef<IBinProjectItem> bin = MakeObject<BinItem>(inID, std::move(inName));
        ioMembers.TakeEach(member::kItems, [&](JSON& ioItem) { bin->AddItem(ReadItem(ioItem)); });
        return bin;
    }

    InterfaceRef<IProjectItem> ReadClip(const Guid& inID, UTF16String inName, Members& ioMembers)
    {
        const Guid masterClip = ioMembers.Take<Guid>(member::kMasterClip);
        const auto found = mMasterClips.find(masterClip);
        if (found == mMasterClips.end()) {
            RefuseMember(member::kMasterClip, masterClip.AsUTF8(), "one that masterClips lists");
        }
        InterfaceRef<IClipProjectItem> clip = MakeObject<ClipItem>(inID, std::move(inName), found->second);
        const TickTime in = ioMembers.TakeOr(member::kInPoint, TickTime());
        const TickTime out = ioMembers.TakeOr(member::kOutPoint, TickTime());
        if (!clip->SetInOutPoints(in, out)) {
            RefuseMember(member::kOutPoint, "the number " + std::to_string(out.Ticks()),
                         "at least that of inPoint, " + std::to_string(in.Ticks()));
        }
        return clip;
    }

    std::set<Guid> mIDs;
    std::map<Guid, InterfaceRef<IMasterClip>> mMasterClips;
    std::vector<InterfaceRef<IMasterClip>> mInFileOrder;
};

} // namespace

InterfaceRef<IProject> ProjectFromJSON(JSON& ioDocument)
{
    return Reader().Read(ioDocument);
}

} // namespace BE
