#include <BE/Backend.h>

#include "PreferenceStore.h"
#include "XMLFileClasses.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/NativePath.h>

#include <atomic>
#include <utility>

namespace BE {

using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using kiocore::filesupport::Durability;

const ImmutableString kPrefsMediaCacheFilesSideBySide("BE.Prefs.MediaCacheFilesSideBySide");
const ImmutableString
    kPrefsEnableExtendedDynamicRangeMonitoring("BE.Prefs.EnableExtendedDynamicRangeMonitoring");
const ImmutableString kPrefsEnableDisplayColorManagement("BE.Prefs.EnableDisplayColorManagement");

IProperties::~IProperties() = default;
const CFUUIDBytes& IProperties::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x47, 0xe3, 0x4f, 0x96, 0xcc, 0xcf, 0x42, 0x02, 0xbb, 0x46, 0x09, 0x2c, 0x8a, 0xdd, 0xfb, 0xea}};
    return kID;
}

IPreferences::~IPreferences() = default;
const CFUUIDBytes& IPreferences::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x58, 0x0c, 0xdd, 0xb0, 0xdc, 0x2c, 0x44, 0x1c, 0x93, 0x71, 0x54, 0x2d, 0xb3, 0x83, 0x71, 0xa5}};
    return kID;
}

IBackend::~IBackend() = default;
const CFUUIDBytes& IBackend::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x97, 0x17, 0xd8, 0x28, 0xb4, 0x33, 0x46, 0x35, 0x9d, 0xa4, 0xac, 0x3c, 0x67, 0xcf, 0x17, 0x38}};
    return kID;
}

namespace {

template <typename Interface>
class Implements : public UnknownBase, public Interface {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == Interface::InterfaceID() ? static_cast<Interface*>(this)
                                                         : UnknownBase::QueryMap(inInterfaceID);
    }
};

PreferenceStore& Store()
{
    return PreferenceStore::Get();
}

class Properties final : public Implements<IProperties> {
public:
    bool GetBool(const ImmutableString& inKey, bool inDefault) const override
    {
        KIO_HOST_CALL("BE::IProperties::GetBool", inKey);
        return Store().FindBool(inKey).value_or(inDefault);
    }
    void SetBool(const ImmutableString& inKey, bool inValue) override
    {
        KIO_HOST_CALL("BE::IProperties::SetBool", inKey, inValue);
        Store().SetBool(inKey, inValue);
    }
    UTF16String GetText(const ImmutableString& inKey, const UTF16String& inDefault) const override
    {
        KIO_HOST_CALL("BE::IProperties::GetText", inKey);
        return Store().FindText(inKey).value_or(inDefault);
    }
    void SetText(const ImmutableString& inKey, const UTF16String& inValue) override
    {
        KIO_HOST_CALL("BE::IProperties::SetText", inKey, inValue);
        Store().SetText(inKey, inValue);
    }
    void Remove(const ImmutableString& inKey) override
    {
        KIO_HOST_CALL("BE::IProperties::Remove", inKey);
        Store().Remove(inKey);
    }
    int GetValue(const ImmutableString& inKey, std::string& outUTF8) const override
    {
        KIO_HOST_CALL("BE::IProperties::GetValue", inKey);
        const auto text = Store().FindText(inKey);
        if (!text) {
            return -1;
        }
        kiocore::filesupport::ToNative(*text, outUTF8);
        return 0;
    }
};

class Preferences final : public Implements<IPreferences> {
public:
    int GetMediaCacheDatabaseFolder(UTF16String& outFolder) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetMediaCacheDatabaseFolder");
        return Store().GetPath(PathPreference::kMediaCacheDatabase, outFolder);
    }
    int GetMediaCacheFilesFolder(UTF16String& outFolder) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetMediaCacheFilesFolder");
        return Store().GetPath(PathPreference::kMediaCacheFiles, outFolder);
    }
    int GetFirstMetadataCacheFolder(UTF16String& outFolder) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetFirstMetadataCacheFolder");
        return Store().GetPath(PathPreference::kFirstMetadataCache, outFolder);
    }
    int GetSecondMetadataCacheFolder(UTF16String& outFolder) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetSecondMetadataCacheFolder");
        return Store().GetPath(PathPreference::kSecondMetadataCache, outFolder);
    }
    int GetPeakFilesFolder(UTF16String& outFolder) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetPeakFilesFolder");
        return Store().GetPath(PathPreference::kPeakFiles, outFolder);
    }
    int GetDocumentLockFile(UTF16String& outPath) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetDocumentLockFile");
        return Store().GetPath(PathPreference::kDocumentLock, outPath);
    }
    Durability GetDurability() const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetDurability");
        return Store().GetDurability();
    }
    std::uint64_t GetRecordMemoryBudget() const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetRecordMemoryBudget");
        return Store().GetRecordMemoryBudget();
    }
    int GetValue(const ImmutableString& inKey, SerializeableValue<bool>& ioValue) const override
    {
        KIO_HOST_CALL("BE::IPreferences::GetValue", inKey);
        const auto value = Store().FindBool(inKey);
        if (!value) {
            return -1;
        }
        ioValue.Set(*value);
        return 0;
    }

    void SetMediaCacheDatabaseFolder(const UTF16String& inFolder) override
    {
        Store().SetPath(PathPreference::kMediaCacheDatabase, inFolder);
    }
    void SetMediaCacheFilesFolder(const UTF16String& inFolder) override
    {
        Store().SetPath(PathPreference::kMediaCacheFiles, inFolder);
    }
    void SetFirstMetadataCacheFolder(const UTF16String& inFolder) override
    {
        Store().SetPath(PathPreference::kFirstMetadataCache, inFolder);
    }
    void SetSecondMetadataCacheFolder(const UTF16String& inFolder) override
    {
        Store().SetPath(PathPreference::kSecondMetadataCache, inFolder);
    }
    void SetPeakFilesFolder(const UTF16String& inFolder) override
    {
        Store().SetPath(PathPreference::kPeakFiles, inFolder);
    }
    void SetDurability(Durability inDurability) override { Store().SetDurability(inDurability); }
    void SetRecordMemoryBudget(std::uint64_t inBytes) override { Store().SetRecordMemoryBudget(inBytes); }

    int Load(const UTF16String& inFile) override
    {
        KIO_HOST_CALL("BE::IPreferences::Load", inFile);
        return Store().Load(inFile);
    }
    int Save() override
    {
        KIO_HOST_CALL("BE::IPreferences::Save");
        return Store().Save();
    }
    void SetDefaultsBelow(const UTF16String& inRoot) override
    {
        KIO_HOST_CALL("BE::IPreferences::SetDefaultsBelow", inRoot);
        UTF16String root = inRoot;
        if (!root.ends_with(u'/')) {
            root += u'/';
        }
        // In the order of PathPreference.
        Store().SetDefaultPaths({root + u"Media Cache", root + u"Media Cache Files", root + u"Metadata Cache",
                                 root + u"Metadata Cache 2", inRoot, root + u"Locks/documents.lock"});
    }
};

class Backend final : public Implements<IBackend> {
public:
    InterfaceRef<IPreferences> GetPreferences() override { return mPreferences; }
    InterfaceRef<IProperties> GetProperties() override { return mProperties; }

private:
    const InterfaceRef<IPreferences> mPreferences = MakeObject<Preferences>();
    const InterfaceRef<IProperties> mProperties = MakeObject<Properties>();
};

int sInitialized = 0; // the caller serialises Initialize and Shutdown
std::atomic<const InterfaceRef<IBackend>*> sReplacement{nullptr};

} // namespace

void Initialize()
{
    KIO_HOST_CALL("BE::Initialize");
    if (sInitialized++ == 0) {
        RegisterXMLFileClasses();
    }
}

void Shutdown()
{
    KIO_HOST_CALL("BE::Shutdown");
    if (sInitialized > 0) {
        --sInitialized;
    }
}

InterfaceRef<IBackend> GetBackend()
{
    if (const auto* replacement = sReplacement.load(std::memory_order_acquire)) {
        return *replacement;
    }
    // Never destroyed: objects that go at exit may still ask.
    static const auto* backend = new InterfaceRef<IBackend>(MakeObject<Backend>());
    return *backend;
}

ScReplaceBackend::ScReplaceBackend(InterfaceRef<IBackend> inBackend)
    : mBackend(std::move(inBackend)), mPrevious(sReplacement.exchange(&mBackend))
{
    Store().CountChange();
}

ScReplaceBackend::~ScReplaceBackend()
{
    sReplacement = mPrevious;
    Store().CountChange();
}

std::uint32_t GetPreferencesChangeCount()
{
    return PreferenceStore::Get().ChangeCount();
}

} // namespace BE
