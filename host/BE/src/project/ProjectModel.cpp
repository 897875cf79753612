#include "ProjectModel.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>

namespace BE {

using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;

namespace {

[[noreturn]] void Refuse(const std::string& inText)
{
    throw kiocore::kio_exception(inText, kiocore::kError_BadArgument);
}

std::string NameOf(const IProjectItem& inItem)
{
    return "Item \"" + kiocore::utility::ToUTF8(inItem.GetName()) + "\"";
}

void Append(const IBinProjectItem& inBin, std::vector<InterfaceRef<IProjectItem>>& outItems)
{
    for (const auto& item : inBin.GetItems()) {
        outItems.push_back(item);
        if (const InterfaceRef<IBinProjectItem> bin = item) {
            Append(*bin, outItems);
        }
    }
}

} // namespace

const ImmutableString kProjectItemOriginalAssetNamePathPropertyKey("BE.ProjectItem.OriginalAssetNamePath");

IMedia::~IMedia() = default;
const CFUUIDBytes& IMedia::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x6b, 0x1e, 0x0c, 0x52, 0x8f, 0x3a, 0x4d, 0x0b, 0x91, 0x5e, 0x27, 0xc4, 0x7a, 0x90, 0x1d, 0x36}};
    return kID;
}

IMasterClip::~IMasterClip() = default;
const CFUUIDBytes& IMasterClip::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0xd4, 0x0f, 0x73, 0x19, 0x25, 0xbe, 0x43, 0xa8, 0xbd, 0x06, 0x5c, 0xe1, 0x38, 0x4f, 0xa2, 0x77}};
    return kID;
}

IProjectItem::~IProjectItem() = default;
const CFUUIDBytes& IProjectItem::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x1f, 0x86, 0xa5, 0xe0, 0x6c, 0x2d, 0x4e, 0x91, 0x8a, 0x43, 0xf0, 0x1b, 0xd9, 0x6e, 0x57, 0xc8}};
    return kID;
}

IClipProjectItem::~IClipProjectItem() = default;
const CFUUIDBytes& IClipProjectItem::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x93, 0xc2, 0x4b, 0x7d, 0xe8, 0x15, 0x4f, 0x60, 0xa7, 0x31, 0x0e, 0x8d, 0x54, 0xb9, 0xc6, 0x02}};
    return kID;
}

IBinProjectItem::~IBinProjectItem() = default;
const CFUUIDBytes& IBinProjectItem::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x5a, 0x79, 0xd1, 0x08, 0x43, 0xf6, 0x4c, 0x2e, 0xb0, 0x9c, 0x61, 0xa7, 0xee, 0x13, 0x84, 0xdb}};
    return kID;
}

IProject::~IProject() = default;
const CFUUIDBytes& IProject::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0xc8, 0x34, 0x9e, 0x61, 0x0b, 0xd7, 0x48, 0x15, 0x96, 0xf2, 0x3d, 0x58, 0x20, 0xa4, 0x7f, 0xe9}};
    return kID;
}

void* Media::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == IMedia::InterfaceID() ? static_cast<IMedia*>(this)
                                                  : UnknownBase::QueryMap(inInterfaceID);
}

UTF16String Media::GetFilePath() const
{
    KIO_HOST_CALL("BE::IMedia::GetFilePath");
    return mFilePath;
}

void* MasterClip::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == IMasterClip::InterfaceID() ? static_cast<IMasterClip*>(this)
                                                       : UnknownBase::QueryMap(inInterfaceID);
}

InterfaceRef<IMedia> MasterClip::GetMedia(std::size_t inIndex) const
{
    return inIndex < mMedia.size() ? mMedia[inIndex] : InterfaceRef<IMedia>();
}

void* Item::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    if (inInterfaceID == IProjectItem::InterfaceID()) {
        return static_cast<IProjectItem*>(this);
    }
    return inInterfaceID == IProperties::InterfaceID() ? static_cast<IProperties*>(this)
                                                       : UnknownBase::QueryMap(inInterfaceID);
}

template <typename T>
const T* Item::Find(const ImmutableString& inKey) const
{
    const auto found = mProperties.find(inKey.View());
    return found != mProperties.end() ? std::get_if<T>(&found->second) : nullptr;
}

bool Item::GetBool(const ImmutableString& inKey, bool inDefault) const
{
    const bool* value = Find<bool>(inKey);
    return value ? *value : inDefault;
}

void Item::SetBool(const ImmutableString& inKey, bool inValue)
{
    mProperties.insert_or_assign(inKey.AsString(), inValue);
}

UTF16String Item::GetText(const ImmutableString& inKey, const UTF16String& inDefault) const
{
    const UTF16String* value = Find<UTF16String>(inKey);
    return value ? *value : inDefault;
}

void Item::SetText(const ImmutableString& inKey, const UTF16String& inValue)
{
    mProperties.insert_or_assign(inKey.AsString(), inValue);
}

void Item::Remove(const ImmutableString& inKey)
{
    if (const auto found = mProperties.find(inKey.View()); found != mProperties.end()) {
        mProperties.erase(found);
    }
}

int Item::GetValue(const ImmutableString& inKey, std::string& outUTF8) const
{
    KIO_HOST_CALL("BE::IProperties::GetValue", inKey);
    const UTF16String* value = Find<UTF16String>(inKey);
    if (!value) {
        return -1;
    }
    kiocore::filesupport::ToNative(*value, outUTF8);
    return 0;
}

void* ClipItem::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == IClipProjectItem::InterfaceID() ? static_cast<IClipProjectItem*>(this)
                                                            : Item::QueryMap(inInterfaceID);
}

InterfaceRef<IMasterClip> ClipItem::GetMasterClip() const
{
    KIO_HOST_CALL("BE::IClipProjectItem::GetMasterClip");
    return mMasterClip;
}

bool ClipItem::SetInOutPoints(TickTime inInPoint, TickTime inOutPoint)
{
    if (!inInPoint.IsUnset() && !inOutPoint.IsUnset() && inOutPoint < inInPoint) {
        return false;
    }
    mInPoint = inInPoint;
    mOutPoint = inOutPoint;
    return true;
}

BinItem::~BinItem()
{
    for (const auto& item : mItems) {
        Ours<Item>(item).mParent = nullptr;
    }
}

void* BinItem::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == IBinProjectItem::InterfaceID() ? static_cast<IBinProjectItem*>(this)
                                                           : Item::QueryMap(inInterfaceID);
}

std::size_t BinItem::LevelsBelow() const
{
    std::size_t levels = 0;
    for (const auto& item : mItems) {
        if (const auto* bin = dynamic_cast<const BinItem*>(item.Get())) {
            levels = std::max(levels, 1 + bin->LevelsBelow());
        }
    }
    return levels;
}

void BinItem::AddItem(const InterfaceRef<IProjectItem>& inItem)
{
    Item& item = Ours<Item>(inItem);
    if (item.mParent) {
        Refuse(NameOf(item) + " is in bin \"" + kiocore::utility::ToUTF8(item.mParent->GetName()) +
               "\" already; expected one that is in none");
    }
    std::size_t levels = 1;
    for (const BinItem* bin = this; bin; bin = bin->mParent, ++levels) {
        if (bin == &item) {
            Refuse(NameOf(item) + " would come to lie within itself");
        }
    }
    const auto* bin = dynamic_cast<const BinItem*>(&item);
    if (bin && levels + bin->LevelsBelow() > kMaxBinLevels) {
        Refuse(NameOf(item) + " would make " + std::to_string(levels + bin->LevelsBelow()) +
               " bins within each other; expected at most " + std::to_string(kMaxBinLevels));
    }
    mItems.push_back(inItem);
    item.mParent = this;
}

void* Project::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == IProject::InterfaceID() ? static_cast<IProject*>(this)
                                                    : UnknownBase::QueryMap(inInterfaceID);
}

std::vector<InterfaceRef<IProjectItem>> Project::GetAllItems() const
{
    std::vector<InterfaceRef<IProjectItem>> items;
    Append(*mRootBin, items);
    return items;
}

template <typename Implementation, typename Interface>
Implementation& Ours(const InterfaceRef<Interface>& inReference)
{
    auto* ours = dynamic_cast<Implementation*>(inReference.Get());
    if (!ours) {
        Refuse(inReference ? "A part of a project was not made by this library"
                           : "A part of a project is empty");
    }
    return *ours;
}

template Media& Ours<Media>(const InterfaceRef<IMedia>&);
template MasterClip& Ours<MasterClip>(const InterfaceRef<IMasterClip>&);
template Item& Ours<Item>(const InterfaceRef<IProjectItem>&);
template Project& Ours<Project>(const InterfaceRef<IProject>&);

InterfaceRef<IProject> CreateProject()
{
    return MakeObject<Project>(CreateBinProjectItem({}));
}

InterfaceRef<IMedia> CreateMedia(const UTF16String& inFilePath)
{
    return MakeObject<Media>(inFilePath, KeptMembers());
}

InterfaceRef<IMasterClip> CreateMasterClip(const std::vector<InterfaceRef<IMedia>>& inMedia)
{
    for (const auto& media : inMedia) {
        if (!media) {
            Refuse("A master clip cannot be made of empty media");
        }
    }
    return MakeObject<MasterClip>(Guid::CreateUnique(), inMedia, KeptMembers());
}

InterfaceRef<IClipProjectItem> CreateClipProjectItem(const UTF16String& inName,
                                                     const InterfaceRef<IMasterClip>& inMasterClip)
{
    if (!inMasterClip) {
        Refuse("Clip \"" + kiocore::utility::ToUTF8(inName) + "\" cannot be made of an empty master clip");
    }
    return MakeObject<ClipItem>(Guid::CreateUnique(), inName, inMasterClip);
}

InterfaceRef<IBinProjectItem> CreateBinProjectItem(const UTF16String& inName)
{
    return MakeObject<BinItem>(Guid::CreateUnique(), inName);
}

InterfaceRef<IMedia> MasterClipUtils::GetMedia(const InterfaceRef<IMasterClip>& inMasterClip,
                                               std::size_t inIndex)
{
    KIO_HOST_CALL("BE::MasterClipUtils::GetMedia", inIndex);
    return inMasterClip ? inMasterClip->GetMedia(inIndex) : InterfaceRef<IMedia>();
}

int ProjectItemUtils::UpdateProjectItemWithInOutPoints(const InterfaceRef<IProjectItem>& inItem,
                                                       TickTime inInPoint, TickTime inOutPoint,
                                                       bool inKeepExisting)
{
    KIO_HOST_CALL("BE::ProjectItemUtils::UpdateProjectItemWithInOutPoints",
                  inItem ? inItem->GetName() : UTF16String(), inInPoint.Ticks(), inOutPoint.Ticks(),
                  inKeepExisting);
    const InterfaceRef<IClipProjectItem> clip = inItem;
    if (!clip) {
        return -1;
    }
    const auto choose = [&](TickTime inOld, TickTime inNew) {
        return inKeepExisting && !inOld.IsUnset() ? inOld : inNew;
    };
    return clip->SetInOutPoints(choose(clip->GetInPoint(), inInPoint),
                                choose(clip->GetOutPoint(), inOutPoint))
               ? 0
               : -2;
}

} // namespace BE
