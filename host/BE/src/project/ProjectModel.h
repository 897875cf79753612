#pragma once

#include <BE/Backend.h>
#include <BE/Project.h>
#include <kiocore/serialization/JSON.h>

#include <map>
#include <string>
#include <variant>

namespace BE {

/// Members of a stored object that this build does not know, kept for the next saving.
using KeptMembers = kiocore::serialization::JSONObject;

class Media final : public kiocore::classref::UnknownBase, public IMedia {
public:
    Media(UTF16String inFilePath, KeptMembers inKept)
        : mFilePath(std::move(inFilePath)), mKept(std::move(inKept))
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    UTF16String GetFilePath() const override;
    const KeptMembers& Kept() const { return mKept; }

private:
    const UTF16String mFilePath;
    const KeptMembers mKept;
};

class MasterClip final : public kiocore::classref::UnknownBase, public IMasterClip {
public:
    MasterClip(const Guid& inID, std::vector<InterfaceRef<IMedia>> inMedia, KeptMembers inKept)
        : mID(inID), mMedia(std::move(inMedia)), mKept(std::move(inKept))
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    std::size_t GetMediaCount() const override { return mMedia.size(); }
    InterfaceRef<IMedia> GetMedia(std::size_t inIndex) const override;
    const Guid& GetID() const { return mID; }
    const KeptMembers& Kept() const { return mKept; }

private:
    const Guid mID;
    const std::vector<InterfaceRef<IMedia>> mMedia;
    const KeptMembers mKept;
};

class BinItem;

/// What all items have.
class Item : public kiocore::classref::UnknownBase, public virtual IProjectItem, public IProperties {
public:
    using Property = std::variant<bool, UTF16String>;
    using Properties = std::map<std::string, Property, std::less<>>;

    Item(const Guid& inID, UTF16String inName) : mID(inID), mName(std::move(inName)) {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

    Guid GetID() const override { return mID; }
    UTF16String GetName() const override { return mName; }
    void SetName(const UTF16String& inName) override { mName = inName; }

    bool GetBool(const ImmutableString& inKey, bool inDefault) const override;
    void SetBool(const ImmutableString& inKey, bool inValue) override;
    UTF16String GetText(const ImmutableString& inKey, const UTF16String& inDefault) const override;
    void SetText(const ImmutableString& inKey, const UTF16String& inValue) override;
    void Remove(const ImmutableString& inKey) override;
    int GetValue(const ImmutableString& inKey, std::string& outUTF8) const override;

    BinItem* mParent = nullptr; // lets go of us when it goes
    Properties mProperties;
    KeptMembers mKept;

private:
    template <typename T>
    const T* Find(const ImmutableString& inKey) const;

    const Guid mID;
    UTF16String mName;
};

class ClipItem final : public Item, public IClipProjectItem {
public:
    ClipItem(const Guid& inID, UTF16String inName, InterfaceRef<IMasterClip> inMasterClip)
        : Item(inID, std::move(inName)), mMasterClip(std::move(inMasterClip))
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    InterfaceRef<IMasterClip> GetMasterClip() const override;
    TickTime GetInPoint() const override { return mInPoint; }
    TickTime GetOutPoint() const override { return mOutPoint; }
    bool SetInOutPoints(TickTime inInPoint, TickTime inOutPoint) override;

private:
    const InterfaceRef<IMasterClip> mMasterClip;
    TickTime mInPoint;
    TickTime mOutPoint;
};

class BinItem final : public Item, public IBinProjectItem {
public:
    using Item::Item;
    ~BinItem() override;
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    std::vector<InterfaceRef<IProjectItem>> GetItems() const override { return mItems; }
    void AddItem(const InterfaceRef<IProjectItem>& inItem) override;

private:
    std::size_t LevelsBelow() const;

    std::vector<InterfaceRef<IProjectItem>> mItems;
};

class Project final : public kiocore::classref::UnknownBase, public IProject {
public:
    explicit Project(InterfaceRef<IBinProjectItem> inRootBin) : mRootBin(std::move(inRootBin)) {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    InterfaceRef<IBinProjectItem> GetRootBin() const override { return mRootBin; }
    std::vector<InterfaceRef<IProjectItem>> GetAllItems() const override;

    /// Those that the file had, also without a clip that uses them.
    std::vector<InterfaceRef<IMasterClip>> mMasterClips;
    KeptMembers mKept;

private:
    const InterfaceRef<IBinProjectItem> mRootBin;
};

/// Our own object behind an interface.
/// @throws kio_exception (kError_BadArgument) when it is somebody else's.
template <typename Implementation, typename Interface>
Implementation& Ours(const InterfaceRef<Interface>& inReference);

} // namespace BE
