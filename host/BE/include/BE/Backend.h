#pragma once

#include <BE/Serialization.h>
#include <kiocore/filesupport/AtomicFile.h>

namespace BE {

/// Named values: of the back end, where the user may change them and they are kept between runs, and of a
/// project item, which are kept in its project. Unset ones, and those set as another type, read as the
/// default given.
///
/// Threading: the back end's: any thread; an item's: as its project.
class KIO_EXPORT IProperties : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IProperties() override;
    virtual bool GetBool(const ImmutableString& inKey, bool inDefault) const = 0;
    virtual void SetBool(const ImmutableString& inKey, bool inValue) = 0;
    virtual UTF16String GetText(const ImmutableString& inKey, const UTF16String& inDefault) const = 0;
    virtual void SetText(const ImmutableString& inKey, const UTF16String& inValue) = 0;
    /// Back to unset.
    virtual void Remove(const ImmutableString& inKey) = 0;
    /// A text in UTF-8. What a path holds of bytes that are no UTF-8 comes as those bytes
    /// (kiocore::filesupport::ToNative), so that the path can be had back whole.
    /// @return 0; negative, outUTF8 untouched, when no text is set under the key.
    virtual int GetValue(const ImmutableString& inKey, std::string& outUTF8) const = 0;
};

/// Bool, default false: cache files lie beside the media they belong to where that folder can be written.
extern KIO_EXPORT const ImmutableString
    kPrefsMediaCacheFilesSideBySide; // "BE.Prefs.MediaCacheFilesSideBySide"
/// Bool: displays may show more than standard dynamic range. Who reads it knows the default.
extern KIO_EXPORT const ImmutableString
    kPrefsEnableExtendedDynamicRangeMonitoring; // "BE.Prefs.EnableExtendedDynamicRangeMonitoring"
/// Bool, default true: pictures are converted to the display's colours.
extern KIO_EXPORT const ImmutableString
    kPrefsEnableDisplayColorManagement; // "BE.Prefs.EnableDisplayColorManagement"

/// The user's preferences: named switches, and folders and policies of the media cache. Each folder getter
/// stores the path (with or without a trailing separator) and returns 0, or returns a negative number and
/// leaves outFolder when there is none.
///
/// Threading: any thread.
class KIO_EXPORT IPreferences : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IPreferences() override;

    virtual int GetMediaCacheDatabaseFolder(UTF16String& outFolder) const = 0;
    virtual int GetMediaCacheFilesFolder(UTF16String& outFolder) const = 0;
    virtual int GetFirstMetadataCacheFolder(UTF16String& outFolder) const = 0;
    virtual int GetSecondMetadataCacheFolder(UTF16String& outFolder) const = 0;
    /// The folder in which "Peak Files" lies.
    virtual int GetPeakFilesFolder(UTF16String& outFolder) const = 0;
    /// The file whose bytes stand for the documents' locks; outside all cache folders.
    virtual int GetDocumentLockFile(UTF16String& outPath) const = 0;
    virtual kiocore::filesupport::Durability GetDurability() const = 0;
    /// How many bytes of records the database may keep in memory.
    virtual std::uint64_t GetRecordMemoryBudget() const = 0;
    /// A named switch, as IProperties::SetBool of the back end's properties sets it.
    /// @param ioValue  holds the default; overwritten when the switch is set.
    /// @return 0; negative when it is not set, or set as another type.
    virtual int GetValue(const ImmutableString& inKey, SerializeableValue<bool>& ioValue) const = 0;

    /// An empty folder is back to the default.
    virtual void SetMediaCacheDatabaseFolder(const UTF16String& inFolder) = 0;
    virtual void SetMediaCacheFilesFolder(const UTF16String& inFolder) = 0;
    virtual void SetFirstMetadataCacheFolder(const UTF16String& inFolder) = 0;
    virtual void SetSecondMetadataCacheFolder(const UTF16String& inFolder) = 0;
    virtual void SetPeakFilesFolder(const UTF16String& inFolder) = 0;
    virtual void SetDurability(kiocore::filesupport::Durability inDurability) = 0;
    virtual void SetRecordMemoryBudget(std::uint64_t inBytes) = 0;

    /// Reads inFile in place of all that was set (missing = all defaults) and keeps later changes for Save.
    /// @return 0; negative when the file is there but cannot be read, or holds what Save could not write
    ///     again: nothing changed, Save refuses to overwrite it. Trace channel "Preferences" tells why.
    virtual int Load(const UTF16String& inFile) = 0;
    /// Saves all that was set, with what the file held and this build does not know, in one step.
    /// @return 0; negative when it failed, or the last Load did, or there was none.
    virtual int Save() = 0;
    /// Sets every folder that was not set by the user (Set... or Load) to its place below a root:
    /// "Media Cache", "Media Cache Files", "Metadata Cache", "Metadata Cache 2", the root itself for peaks,
    /// and "Locks/documents.lock".
    virtual void SetDefaultsBelow(const UTF16String& inRoot) = 0;
};

/// The back end: one for the process between Initialize and Shutdown.
class KIO_EXPORT IBackend : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IBackend() override;
    virtual InterfaceRef<IPreferences> GetPreferences() = 0;
    virtual InterfaceRef<IProperties> GetProperties() = 0;
};

/// Brings the back end up: registers the reader and writer classes. Counted; preferences outlive a
/// Shutdown, as they are the user's.
///
/// Threading: the caller serialises both (the library does so under its lifecycle lock).
KIO_EXPORT void Initialize();
KIO_EXPORT void Shutdown();

/// Never empty, also before Initialize: the host sets preferences before it brings the library up. Only a
/// replacement may be.
KIO_EXPORT InterfaceRef<IBackend> GetBackend();

/// Puts another back end, or none, in place for as long as it lives: for hosts that keep preferences
/// elsewhere, and for tests of how the library does without. Innermost counts.
///
/// Threading: made and destroyed while nobody else asks for the back end.
class KIO_EXPORT ScReplaceBackend {
public:
    explicit ScReplaceBackend(InterfaceRef<IBackend> inBackend);
    ~ScReplaceBackend();
    ScReplaceBackend(const ScReplaceBackend&) = delete;
    ScReplaceBackend& operator=(const ScReplaceBackend&) = delete;

private:
    const InterfaceRef<IBackend> mBackend;
    const InterfaceRef<IBackend>* const mPrevious;
};

/// Changes whenever a preference or property does, so that callers on hot paths can keep what they read.
/// One acquire load.
KIO_EXPORT std::uint32_t GetPreferencesChangeCount();

} // namespace BE
