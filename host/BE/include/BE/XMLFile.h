#pragma once

#include <BE/Serialization.h>
#include <kiocore/filesupport/AtomicFile.h>

#include <string>
#include <string_view>

namespace BE {

/// Class-factory classes of the reader and the writer, registered by BE::Initialize().
extern KIO_EXPORT const Guid kXMLFileReaderClassID;
extern KIO_EXPORT const Guid kXMLFileWriterClassID;

/// Limits of what a reader accepts; larger files are not opened.
inline constexpr std::size_t kMaxXMLFileBytes = 64u << 20;
inline constexpr int kMaxXMLNesting = 32;

/// Reads one document. The dialect is described in docs/record-format.md.
///
/// Threading: one thread at a time; different readers are independent.
class KIO_EXPORT IXMLFileReader : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IXMLFileReader() override;

    /// Reads and parses the whole file. May be called again for another file.
    /// @return 0; negative when the file cannot be opened or read, is too large, is no well-formed XML, has
    ///     another root, a newer dialect version, too deep nesting or a document type declaration.
    virtual int Open(const UTF16String& inPath) = 0;
    /// The same for bytes in memory.
    virtual int OpenBytes(std::string_view inBytes) = 0;
    /// Why the last Open failed, for people; empty after a success.
    virtual std::string GetOpenError() const = 0;
    /// Modification time of the opened file, asked of the open file itself; 0 for bytes in memory.
    virtual kiocore::filesupport::FileTime GetModificationTime() const = 0;
    /// The document's values: its objects by key. Valid until the next Open, and while this lives.
    virtual DataReader& GetDataReader() = 0;
    /// Calls inVisit(type, key, value text) for every value of the object under inKey in stored order,
    /// whatever it holds: a text decoded, all else, and what is damaged, as it stands. An object within it is
    /// one value (its class name and version); a map gives its size, then its pairs as values of type
    /// "Entry".
    /// @return false when the document has no such object.
    virtual bool VisitStored(
        const ImmutableString& inKey,
        const std::function<void(std::string_view, std::string_view, const UTF16String&)>& inVisit) = 0;
};

/// Builds one document and saves it.
///
/// Threading: one thread at a time.
class KIO_EXPORT IXMLFileWriter : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IXMLFileWriter() override;

    virtual DataWriter& GetDataWriter() = 0;
    /// Saves what was written, in one step (SaveFileAtomically), as durably as the preferences say.
    /// @return 0; negative when it failed: the old file is as it was.
    virtual int Save(const UTF16String& inPath) = 0;
    /// Details of the last Save.
    virtual kiocore::filesupport::SaveResult GetSaveResult() const = 0;
    /// The document as it would be saved, UTF-8.
    virtual std::string GetBytes() const = 0;
};

} // namespace BE
