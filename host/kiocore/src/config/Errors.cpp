#include <kiocore/config/Errors.h>

#include <system_error>

namespace kiocore {

kio_exception::kio_exception(std::string inTextUTF8, std::uint32_t inCode) : mText(std::move(inTextUTF8)), mCode(inCode)
{
}
kio_exception::kio_exception(utility::UTF16View inText, std::uint32_t inCode)
    : kio_exception(utility::ToUTF8(inText), inCode)
{
}
kio_exception::~kio_exception() = default;

file_exception::file_exception(const char* inOperation, std::string_view inPathUTF8, int inErrno)
    : kio_exception("Cannot " + std::string(inOperation) + " " + std::string(inPathUTF8) + ": " +
                        std::generic_category().message(inErrno),
                    kError_File),
      mErrno(inErrno)
{
}
file_exception::~file_exception() = default;

null_reference_exception::null_reference_exception(const std::string& inTypeName)
    : kio_exception("An empty reference was used where a " + inTypeName + " was expected", kError_NullReference)
{
}
null_reference_exception::~null_reference_exception() = default;

} // namespace kiocore
