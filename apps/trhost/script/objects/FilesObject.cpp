#include "FilesObject.h"

#include "../../support/Failure.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>
#include <kioscripting/ClassBuilder.h>

#include <algorithm>
#include <filesystem>

namespace trhost::script {
namespace {

namespace fs = std::filesystem;
using kiocore::filesupport::FromNative;
using kioscripting::kParameter_Required;
using kioscripting::Value;

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30; // a script's text or buffer

kioscripting::ClassDefinition DefineFiles()
{
    const kioscripting::ParameterDefinition readable{"path", "string", kParameter_Required,
                                                     "within the folders that may be read"};
    const kioscripting::ParameterDefinition writable{"path", "string", kParameter_Required,
                                                     "within the folders that may be written"};
    return kioscripting::ClassBuilder<FilesObject>(
               "Halcyon.TrHost", "Files",
               "Files in the folders that the script may use: the global object files.")
        .Method("exists", "Says whether there is a file or folder", &FilesObject::Exists, {readable},
                {"exists", "boolean"})
        .Method("read", "Returns a file's text, taken as UTF-8", &FilesObject::Read, {readable},
                {"text", "string"})
        .Method("readBytes", "Returns a file's bytes", &FilesObject::ReadBytes, {readable},
                {"bytes", "Uint8Array"})
        .Method(
            "write", "Writes a file in one step, in place of one that is there", &FilesObject::Write,
            {writable, {"contents", "string", kParameter_Required, "a text, or the bytes of a Uint8Array"}})
        .Method("writeBase64", "The same with bytes that a text holds, as diffData does",
                &FilesObject::WriteBase64, {writable, {"text", "string"}})
        .Method("list", "Returns the names in a folder, sorted", &FilesObject::List, {readable},
                {"names", "string[]"})
        .Method("makeFolder", "Makes a folder, and those above it that are missing", &FilesObject::MakeFolder,
                {writable})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sFilesDefinition(&DefineFiles);

std::string ReadFile(const std::string& inPath)
{
    kiocore::filesupport::IPlatformByteStream stream(FromNative(inPath));
    const std::uint64_t size = stream.Size();
    if (size > kMostBytes) {
        throw kiocore::kio_exception(
            Text("$$$/Halcyon/TrHost/ScriptFileTooLarge=@0 has @1 bytes; a script can read up to @2",
                 {FromNative(inPath), kiocore::utility::DecimalText(size),
                  kiocore::utility::DecimalText(kMostBytes)}),
            kiocore::kError_BadArgument);
    }
    std::string bytes(size, '\0');
    bytes.resize(stream.ReadBlock(bytes.data(), bytes.size()));
    return bytes;
}

void WriteFile(const std::string& inPath, std::string_view inBytes)
{
    const auto saved = kiocore::filesupport::SaveFileAtomically(FromNative(inPath), inBytes,
                                                                kiocore::filesupport::Durability::kFile);
    if (saved.result < 0) {
        throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/NotSaved=@0 could not be saved: @1",
                                          {FromNative(inPath), kiocore::SystemErrorText(saved.errorNumber)}),
                                     kiocore::kError_File);
    }
}

[[noreturn]] void ThrowNoBase64(std::size_t inPosition)
{
    throw kiocore::kio_exception(
        Text("$$$/Halcyon/TrHost/ScriptNoBase64=the text is no base64: at character @0",
             {kiocore::utility::DecimalText(inPosition)}),
        kiocore::kError_BadArgument);
}

int DigitOf(char inLetter)
{
    const auto in = [inLetter](char inFirst, char inLast) {
        return inLetter >= inFirst && inLetter <= inLast;
    };
    if (in('A', 'Z')) {
        return inLetter - 'A';
    }
    if (in('a', 'z')) {
        return inLetter - 'a' + 26;
    }
    if (in('0', '9')) {
        return inLetter - '0' + 52;
    }
    return inLetter == '+' ? 62 : inLetter == '/' ? 63 : -1;
}

/// RFC 4648, with padding.
std::string FromBase64(const std::string& inText)
{
    if (inText.size() % 4 != 0) {
        ThrowNoBase64(inText.size());
    }
    std::size_t padding = 0;
    while (padding < 2 && padding < inText.size() && inText[inText.size() - 1 - padding] == '=') {
        ++padding;
    }
    std::string bytes;
    bytes.reserve(inText.size() / 4 * 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const int digit = i < inText.size() - padding ? DigitOf(inText[i]) : 0;
        if (digit < 0) {
            ThrowNoBase64(i);
        }
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        if (i % 4 == 3) {
            for (int shift = 16; shift >= 0; shift -= 8) {
                bytes += static_cast<char>(bits >> shift);
            }
        }
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

} // namespace

const char* FilesObject::GetClassname() const
{
    return "Files";
}

bool FilesObject::Exists(const kiocore::UTF16String& inPath) const
{
    std::error_code error;
    return fs::exists(mHost->folders.ToRead(inPath), error);
}

std::string FilesObject::Read(const kiocore::UTF16String& inPath) const
{
    return ReadFile(mHost->folders.ToRead(inPath));
}

Value FilesObject::ReadBytes(const kiocore::UTF16String& inPath) const
{
    const std::string read = ReadFile(mHost->folders.ToRead(inPath));
    const auto* const bytes = reinterpret_cast<const std::byte*>(read.data());
    return kioscripting::Bytes{{bytes, bytes + read.size()}};
}

void FilesObject::Write(const kiocore::UTF16String& inPath, const Value& inContents) const
{
    const std::string path = mHost->folders.ToWrite(inPath);
    if (const std::string* const text = inContents.As<std::string>()) {
        WriteFile(path, *text);
    } else if (const kioscripting::Bytes* const bytes = inContents.As<kioscripting::Bytes>()) {
        WriteFile(path, {reinterpret_cast<const char*>(bytes->bytes.data()), bytes->bytes.size()});
    } else {
        kioscripting::ThrowWrongType("a string or bytes", inContents);
    }
}

void FilesObject::WriteBase64(const kiocore::UTF16String& inPath, const std::string& inText) const
{
    const std::string path = mHost->folders.ToWrite(inPath);
    WriteFile(path, FromBase64(inText));
}

std::vector<kiocore::UTF16String> FilesObject::List(const kiocore::UTF16String& inPath) const
{
    const std::string folder = mHost->folders.ToRead(inPath);
    std::vector<kiocore::UTF16String> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        names.push_back(FromNative(entry->path().filename().native()));
    }
    if (error) {
        throw kiocore::file_exception("read", folder, error.value());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void FilesObject::MakeFolder(const kiocore::UTF16String& inPath) const
{
    const std::string folder = mHost->folders.ToWrite(inPath);
    if (kiocore::filesupport::MakeFolders(folder) != 0) {
        throw kiocore::file_exception("make", folder, errno);
    }
}

} // namespace trhost::script
