// Any bytes as an effect-type file: refused, or read as a type that is written and read back the same.

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <TR/EffectType.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Errors.h>

#include <cstdlib>

namespace {

using kiocore::InterfaceRef;
using kiocore::classref::ClassFactory;

constexpr unsigned int kVersion = 3;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

/// @return false when the bytes are no document, or it holds no type.
bool Read(std::string_view inBytes, TR::EffectType& outType)
{
    const InterfaceRef<BE::IXMLFileReader> reader =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
    if (reader->OpenBytes(inBytes) < 0) {
        return false;
    }
    try {
        outType.SerializeIn(kVersion, reader->GetDataReader());
        return true;
    } catch (const kiocore::kio_exception& refusal) {
        Require(*refusal.what() != '\0');
        return false;
    }
}

std::string Write(const TR::EffectType& inType)
{
    const InterfaceRef<BE::IXMLFileWriter> writer =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
    inType.SerializeOut(writer->GetDataWriter());
    return writer->GetBytes();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    static const int sBackEnd = (BE::Initialize(), 0);
    static_cast<void>(sBackEnd);
    TR::EffectType type;
    if (!Read({reinterpret_cast<const char*>(inBytes), inSize}, type)) {
        return 0;
    }
    const std::string written = Write(type);
    TR::EffectType again;
    Require(Read(written, again));
    Require(Write(again) == written && again.GetGuid() == type.GetGuid() &&
            again.GetName() == type.GetName());
    return 0;
}
