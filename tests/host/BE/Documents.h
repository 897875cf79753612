#pragma once

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>

#include <functional>
#include <string>
#include <string_view>

namespace BE::test {

inline InterfaceRef<IXMLFileReader> MakeReader()
{
    BE::Initialize();
    return kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileReaderClassID);
}

inline InterfaceRef<IXMLFileWriter> MakeWriter()
{
    BE::Initialize();
    return kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileWriterClassID);
}

/// A document in the dialect around the given elements.
inline std::string Document(std::string_view inElements)
{
    return "<BackEndDocument Version=\"1\">" + std::string(inElements) + "</BackEndDocument>";
}

/// An object whose reading and writing a test gives as functions.
class Scripted final : public kiocore::classref::UnknownBase, public ISerializeable {
public:
    static constexpr const char* kClassID = "0f0b9c52-6a3e-4d55-9c34-5b3a8f1d7e60";
    static inline std::function<void(unsigned, DataReader&)> sRead;
    static inline std::function<void(DataWriter&)> sWrite;

    static void Register()
    {
        kiocore::classref::ClassFactory::RegisterClass(
            Guid(kClassID), "kScriptedClassID", "Scripted",
            [](InterfaceRef<kiocore::classref::UnknownBase>& outObject) {
                outObject = kiocore::classref::MakeObject<Scripted>();
            });
    }

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == ISerializeable::InterfaceID() ? static_cast<ISerializeable*>(this) : nullptr;
    }
    void SerializeIn(unsigned int inVersion, DataReader& inReader) override { sRead(inVersion, inReader); }
    void SerializeOut(DataWriter& inWriter) const override { sWrite(inWriter); }
    void SerializeToSink(IDictionarySink&) const override {}
    unsigned int GetVersion() const override { return 7; }
    Guid GetClassID() const override { return Guid(kClassID); }
    ImmutableString GetClassName() const override { return "Scripted"; }
};

} // namespace BE::test
