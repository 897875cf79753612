#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace kiocore {
namespace {

struct Sentence {
    std::string_view operation;
    const char* text;
};
// An operation is part of a sentence, which other languages build differently: each has its own.
constexpr Sentence kSentences[] = {
    {"open", "$$$/kiocore/Error/File/Open=Cannot open @0: @1#{@0: a file, @1: the reason}"},
    {"read", "$$$/kiocore/Error/File/Read=Cannot read @0: @1#{@0: a file, @1: the reason}"},
    {"write", "$$$/kiocore/Error/File/Write=Cannot write @0: @1#{@0: a file, @1: the reason}"},
    {"create", "$$$/kiocore/Error/File/Create=Cannot create @0: @1#{@0: a file, @1: the reason}"},
    {"close", "$$$/kiocore/Error/File/Close=Cannot close @0: @1#{@0: a file, @1: the reason}"},
    {"delete", "$$$/kiocore/Error/File/Delete=Cannot delete @0: @1#{@0: a file, @1: the reason}"},
    {"rename", "$$$/kiocore/Error/File/Rename=Cannot rename @0: @1#{@0: a file, @1: the reason}"},
    {"save", "$$$/kiocore/Error/File/Save=Cannot save @0: @1#{@0: a file, @1: the reason}"},
    {"lock", "$$$/kiocore/Error/File/Lock=Cannot lock @0: @1#{@0: a file, @1: the reason}"},
    {"make", "$$$/kiocore/Error/File/Make=Cannot make @0: @1#{@0: a file, @1: the reason}"},
    {"map", "$$$/kiocore/Error/File/Map=Cannot map @0: @1#{into memory; @0: a file, @1: the reason}"},
    {"complete", "$$$/kiocore/Error/File/Complete=Cannot complete @0: @1#{@0: a file, @1: the reason}"},
    {"find room for",
     "$$$/kiocore/Error/File/FindRoom=Cannot find room for @0: @1#{on the disk; @0: a file, @1: "
     "the reason}"},
    {"find out the size of",
     "$$$/kiocore/Error/File/FindSize=Cannot find out the size of @0: @1#{@0: a file, @1: the reason}"},
    {"update the access time of", "$$$/kiocore/Error/File/UpdateTime=Cannot update the access time of @0: "
                                  "@1#{@0: a file, @1: the reason}"},
    {"list folder", "$$$/kiocore/Error/File/ListFolder=Cannot list folder @0: @1#{@1: the reason}"},
    {"make the folder", "$$$/kiocore/Error/File/MakeFolder=Cannot make the folder @0: @1#{@1: the reason}"},
    {"open lock file", "$$$/kiocore/Error/File/OpenLock=Cannot open lock file @0: @1#{@1: the reason}"},
    {"ask for the state of lock file",
     "$$$/kiocore/Error/File/AskLock=Cannot ask for the state of lock file @0: @1#{@1: the reason}"},
    {"read project file",
     "$$$/kiocore/Error/File/ReadProject=Cannot read project file @0: @1#{@1: the reason}"},
    {"save project file",
     "$$$/kiocore/Error/File/SaveProject=Cannot save project file @0: @1#{@1: the reason}"},
    {"set aside the damaged crash history", "$$$/kiocore/Error/File/SetAsideHistory=Cannot set aside the "
                                            "damaged crash history @0: @1#{@1: the reason}"},
};

struct Reason {
    int number;
    const char* text;
};
// Those that people meet. Their defaults are the system's own words.
constexpr Reason kReasons[] = {
    {EACCES, "$$$/kiocore/Error/System/Access=Permission denied"},
    {EBUSY, "$$$/kiocore/Error/System/Busy=Device or resource busy"},
    {EDQUOT, "$$$/kiocore/Error/System/Quota=Disk quota exceeded"},
    {EEXIST, "$$$/kiocore/Error/System/Exists=File exists"},
    {EFBIG, "$$$/kiocore/Error/System/TooBig=File too large"},
    {EINVAL, "$$$/kiocore/Error/System/Invalid=Invalid argument"},
    {EIO, "$$$/kiocore/Error/System/InputOutput=Input/output error"},
    {EISDIR, "$$$/kiocore/Error/System/IsFolder=Is a directory"},
    {ELOOP, "$$$/kiocore/Error/System/Loop=Too many levels of symbolic links"},
    {EMFILE, "$$$/kiocore/Error/System/OpenFiles=Too many open files"},
    {ENAMETOOLONG, "$$$/kiocore/Error/System/LongName=File name too long"},
    {ENODEV, "$$$/kiocore/Error/System/NoDevice=No such device"},
    {ENOENT, "$$$/kiocore/Error/System/NoEntry=No such file or directory"},
    {ENOEXEC, "$$$/kiocore/Error/System/NoProgram=Exec format error"},
    {ENOMEM, "$$$/kiocore/Error/System/NoMemory=Cannot allocate memory"},
    {ENOSPC, "$$$/kiocore/Error/System/NoSpace=No space left on device"},
    {ENOTDIR, "$$$/kiocore/Error/System/NoFolder=Not a directory"},
    {ENOTEMPTY, "$$$/kiocore/Error/System/NotEmpty=Directory not empty"},
    {EPERM, "$$$/kiocore/Error/System/NotPermitted=Operation not permitted"},
    {EPIPE, "$$$/kiocore/Error/System/BrokenPipe=Broken pipe"},
    {EROFS, "$$$/kiocore/Error/System/ReadOnly=Read-only file system"},
    {ESTALE, "$$$/kiocore/Error/System/Stale=Stale file handle"},
    {ETIMEDOUT, "$$$/kiocore/Error/System/TimedOut=Connection timed out"},
    {EXDEV, "$$$/kiocore/Error/System/OtherDevice=Invalid cross-device link"},
};

std::string TextOf(std::string_view inOperation, std::string_view inPath, int inErrno)
{
    using config::Localizer;
    const utility::UTF16String path = utility::ToUTF16(inPath);
    for (const Sentence& sentence : kSentences) {
        if (sentence.operation == inOperation) {
            return utility::ToUTF8(
                Localizer::Format(Localizer::GetText(sentence.text), {path, SystemErrorText(inErrno)}));
        }
    }
    return "Cannot " + std::string(inOperation) + " " + std::string(inPath) + ": " +
           utility::ToUTF8(SystemErrorText(inErrno));
}

} // namespace

utility::UTF16String SystemErrorText(int inErrno)
{
    for (const Reason& reason : kReasons) {
        if (reason.number == inErrno) {
            return config::Localizer::GetText(reason.text);
        }
    }
    return utility::ToUTF16(std::generic_category().message(inErrno));
}

file_exception::file_exception(const char* inOperation, std::string_view inPathUTF8, int inErrno)
    : kio_exception(TextOf(inOperation, inPathUTF8, inErrno), kError_File), mErrno(inErrno)
{}
file_exception::~file_exception() = default;

} // namespace kiocore
