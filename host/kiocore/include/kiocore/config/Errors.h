#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace kiocore {

/// Codes of the host libraries' own failures.
enum ErrorCode : std::uint32_t {
    kError_Generic = 0x80010000,
    kError_NullReference = 0x80010001,
    kError_BadGuidText = 0x80010002,
    kError_NoRandomSource = 0x80010003,
    kError_Startup = 0x80010004,
    kError_File = 0x80010005,
    kError_ClassNotRegistered = 0x80010006,
    kError_Cancelled = 0x80010007,
    kError_BadConversion = 0x80010008,
    kError_BadArgument = 0x80010009,
    kError_DamagedData = 0x8001000A,
    kError_TypeMismatch = 0x8001000C,
    kError_BrokenPromise = 0x8001000E,
    kError_InputContract = 0x8001000F,
    kError_ExecutorTerminated = 0xF3610003,
    kError_DataReadFailed = 0xF865001E,
};

/// What the host's core throws: a text for people and a 32-bit code for programs. Where a fixed message goes
/// with a code, the text is that message, and what() tells the case as well: "message: detail".
///
/// Threading: a value; may be carried to another thread in an exception_ptr.
class KIO_EXPORT kio_exception : public std::exception {
public:
    kio_exception(std::string inTextUTF8, std::uint32_t inCode);
    kio_exception(utility::UTF16View inText, std::uint32_t inCode);
    /// @param inMessageUTF8  what Text() gives.
    kio_exception(std::string_view inMessageUTF8, std::string_view inDetailUTF8, std::uint32_t inCode);
    ~kio_exception() override;

    const char* what() const noexcept override { return mText.c_str(); }
    utility::UTF16String Text() const
    {
        return utility::ToUTF16(std::string_view(mText).substr(0, mMessageSize));
    }
    std::uint32_t Code() const noexcept { return mCode; }

    /// Says where it was thrown and which condition did not hold, for logs; the text stays as it is.
    /// `throw` what this returns for a kio_exception itself; a class derived from it would be cut to one.
    /// @param inSource, inFailedCondition  literals: kept as pointers.
    kio_exception& At(const char* inSource, const char* inFailedCondition) noexcept
    {
        mSource = inSource;
        mFailedCondition = inFailedCondition;
        return *this;
    }
    /// "" when nobody said.
    const char* Source() const noexcept { return mSource; }
    const char* FailedCondition() const noexcept { return mFailedCondition; }
    /// "source: failed condition" as logs show it; empty when nobody said.
    std::string Place() const;

private:
    std::string mText;
    std::size_t mMessageSize;
    std::uint32_t mCode;
    const char* mSource = "";
    const char* mFailedCondition = "";
};

/// The system's reason for an error number: "No such file or directory", in the language of the Localizer
/// where people are likely to meet it.
KIO_EXPORT utility::UTF16String SystemErrorText(int inErrno);

/// A file operation failed. The text names the operation, the path and the system's reason.
class KIO_EXPORT file_exception : public kio_exception {
public:
    /// @param inOperation  "open", "find out the size of": goes on behind "Cannot". Those that people meet
    /// are
    ///     known with their sentence in other languages (FileErrors.cpp).
    /// @param inErrno  the system's error number.
    file_exception(const char* inOperation, std::string_view inPathUTF8, int inErrno);
    ~file_exception() override;
    int Errno() const noexcept { return mErrno; }

private:
    int mErrno;
};

/// An empty reference was used as if it denoted an object of the named type.
class KIO_EXPORT null_reference_exception : public kio_exception {
public:
    explicit null_reference_exception(const std::string& inTypeName);
    ~null_reference_exception() override;
};

namespace config {

using kiocore::kio_exception;

/// Throws kio_exception (kError_Startup) with a localised message in which ^1 to ^4 stand for the
/// four replacement values: ^1 is inValue1. Noted on trace channel "Errors" at level 1.
/// @param inLevel          0 = the application cannot go on.
/// @param inLocalisedText  "$$$/Key=English default".
/// @param inNumberA, inNumberB  shown after the message, as in "(3, 17)", those that are not 0.
/// @param inFatal          only noted in the trace; the caller's unwinding decides what happens.
[[noreturn]] KIO_EXPORT void ThrowError(int inLevel, const char* inLocalisedText, int inNumberA,
                                        int inNumberB, bool inFatal, const utility::UTF16String& inValue1,
                                        const utility::UTF16String& inValue2,
                                        const utility::UTF16String& inValue3,
                                        const utility::UTF16String& inValue4);

} // namespace config
} // namespace kiocore
