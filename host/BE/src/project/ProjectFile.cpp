#include "ProjectFormat.h"

#include "../platform/FileBytes.h"

#include <BE/Backend.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>

namespace BE {

using kiocore::utility::ToUTF8;

namespace {

kiocore::filesupport::Durability PreferredDurability()
{
    if (const auto backend = GetBackend()) {
        if (const auto preferences = backend->GetPreferences()) {
            return preferences->GetDurability();
        }
    }
    return kiocore::filesupport::Durability::kFile;
}

/// Where a link leads, so that it stays a link when the file behind it is replaced.
UTF16String FollowLinks(const UTF16String& inPath)
{
    std::error_code error;
    const auto target = std::filesystem::canonical(kiocore::filesupport::ToNative(inPath), error);
    return error ? inPath : kiocore::filesupport::FromNative(target.native());
}

} // namespace

InterfaceRef<IProject> ReadProjectFile(const UTF16String& inPath)
{
    KIO_HOST_CALL("BE::ReadProjectFile", inPath);
    ByteBuffer buffer;
    const FileBytes file = ReadFileBytes(inPath, kMaxProjectFileBytes, buffer);
    if (file.errorNumber != 0) {
        throw kiocore::file_exception("read project file", ToUTF8(inPath), file.errorNumber);
    }
    const auto damaged = [&inPath](const std::exception& inProblem) {
        return exDamagedData("Project file " + ToUTF8(inPath) + ": " + inProblem.what());
    };
    try {
        auto document = kiocore::serialization::GetJSONFromUTF8String({buffer.bytes.get(), file.size});
        return ProjectFromJSON(document);
    } catch (const kiocore::serialization::not_well_formed_exception& problem) {
        throw damaged(problem);
    } catch (const kiocore::serialization::bad_cast_exception& problem) {
        throw damaged(problem);
    } catch (const kiocore::kio_exception& problem) {
        throw damaged(problem);
    }
}

void WriteProjectFile(const InterfaceRef<IProject>& inProject, const UTF16String& inPath)
{
    KIO_HOST_CALL("BE::WriteProjectFile", inPath);
    std::string text = kiocore::serialization::GetJSONUTF8String(ProjectToJSON(inProject), true);
    text += '\n';
    const auto saved =
        kiocore::filesupport::SaveFileAtomically(FollowLinks(inPath), text, PreferredDurability());
    if (saved.result < 0) {
        throw kiocore::file_exception("save project file", ToUTF8(inPath), saved.errorNumber);
    }
}

} // namespace BE
