#include "CacheSetup.h"

#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <ZOL/DirectoryRegistry.h>
#include <kiocore/classref/ClassFactory.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>

namespace bench {

using kiocore::utility::ToUTF16;

const Guid CacheSetup::kState("11111111-2222-3333-4444-555555555555");

UTF16String StreamID(unsigned inStream)
{
    return kiocore::utility::DecimalText(inStream);
}
UTF16String ItemKey(unsigned inItem)
{
    return u"Conformed 48000 " + kiocore::utility::DecimalText(inItem);
}

CacheSetup::CacheSetup()
{
    const auto preferences = BE::GetBackend()->GetPreferences();
    preferences->SetDefaultsBelow(ToUTF16(Root()));
    ZOL::DirectoryRegistry::RegisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments,
                                              ToUTF16(Root() + "/Shared"));
    TR::TRFoundation::Initialize();
    mDatabase = kiocore::classref::ClassFactory::CreateClassInstanceRef(TR::kMediaAcceleratorDatabaseClassID);
}

CacheSetup::~CacheSetup()
{
    mDatabase.Reset();
    TR::TRFoundation::Shutdown();
}

void CacheSetup::SetMemoryBudget(std::uint64_t inBytes)
{
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(inBytes);
}

const CacheSetup::Document& CacheSetup::AddDocument(unsigned inNumber, unsigned inStreams, unsigned inItems,
                                                    bool inShareFiles)
{
    Document document;
    document.id = Guid::FromHash(std::as_bytes(std::span(&inNumber, 1)), 1);
    document.record = DatabaseFolder() + document.id.AsUTF8() + "3584.mcdb";
    const auto entry = TR::MediaAcceleratorDatabaseEntry::Create(kState);
    entry->SetOriginal(
        ToUTF16("/projects/documentary/footage/day one/clip " + std::to_string(inNumber) + ".mov"));
    for (unsigned s = 0; s < inStreams; ++s) {
        for (unsigned i = 0; i < inItems; ++i) {
            const std::string path = CacheFolder() + "clip " + std::to_string(inNumber) +
                                     (inShareFiles ? "" : " " + std::to_string(s) + "-" + std::to_string(i)) +
                                     ".cfa";
            if (!inShareFiles || (s == 0 && i == 0)) {
                std::ofstream(path) << "x";
            }
            document.items.push_back(path);
            entry->AddItem(StreamID(s), {ToUTF16(path), {}, ItemKey(i), true}, true);
        }
    }
    // The whole record at once: 128 Adds of a document would save it 128 times.
    const kiocore::InterfaceRef<BE::IXMLFileWriter> writer =
        kiocore::classref::ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
    writer->GetDataWriter().WriteObject(TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                        entry);
    if (writer->Save(ToUTF16(document.record)) < 0) {
        throw std::runtime_error("cannot record " + document.record);
    }
    mDocuments.push_back(std::move(document));
    return mDocuments.back();
}

void CacheSetup::AddDocuments(unsigned inCount, unsigned inStreams, unsigned inItems, bool inShareFiles)
{
    std::filesystem::create_directories(CacheFolder());
    std::filesystem::create_directories(DatabaseFolder());
    const auto preferences = BE::GetBackend()->GetPreferences();
    const auto durability = preferences->GetDurability();
    preferences->SetDurability(kiocore::filesupport::Durability::kNone);
    mDocuments.reserve(inCount);
    for (unsigned n = 0; n < inCount; ++n) {
        AddDocument(n, inStreams, inItems, inShareFiles);
    }
    preferences->SetDurability(durability);
}

void CacheSetup::Clear()
{
    TR::MediaAcceleratorDatabase::Shutdown();
    mDocuments.clear();
    std::filesystem::remove_all(DatabaseFolder());
    std::filesystem::remove_all(CacheFolder());
}

} // namespace bench
