#include "CacheSetup.h"

#include <TR/TRFoundation.h>

#include <BE/Backend.h>
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
    const auto preferences = BE::GetBackend()->GetPreferences();
    const auto durability = preferences->GetDurability();
    preferences->SetDurability(kiocore::filesupport::Durability::kNone);
    Document document;
    document.id = Guid::FromHash(std::as_bytes(std::span(&inNumber, 1)), 1);
    document.record = DatabaseFolder() + document.id.AsUTF8() + "3584.mcdb";
    const UTF16String original =
        ToUTF16("/projects/documentary/footage/day one/clip " + std::to_string(inNumber) + ".mov");
    // One write for the whole record: the entry is built in memory and stored by the last Add.
    for (unsigned s = 0; s < inStreams; ++s) {
        for (unsigned i = 0; i < inItems; ++i) {
            const std::string path = CacheFolder() + "clip " + std::to_string(inNumber) +
                                     (inShareFiles ? "" : " " + std::to_string(s) + "-" + std::to_string(i)) +
                                     ".cfa";
            if (!inShareFiles || (s == 0 && i == 0)) {
                std::ofstream(path) << "x";
            }
            document.items.push_back(path);
            if (mDatabase->Add(document.id, kState, original, StreamID(s), ItemKey(i), ToUTF16(path), true) <
                0) {
                throw std::runtime_error("cannot record " + path);
            }
        }
    }
    preferences->SetDurability(durability);
    mDocuments.push_back(std::move(document));
    return mDocuments.back();
}

void CacheSetup::AddDocuments(unsigned inCount, unsigned inStreams, unsigned inItems, bool inShareFiles)
{
    std::filesystem::create_directories(CacheFolder());
    mDocuments.reserve(inCount);
    for (unsigned n = 0; n < inCount; ++n) {
        AddDocument(n, inStreams, inItems, inShareFiles);
    }
}

void CacheSetup::Clear()
{
    TR::MediaAcceleratorDatabase::Shutdown();
    mDocuments.clear();
    std::filesystem::remove_all(DatabaseFolder());
    std::filesystem::remove_all(CacheFolder());
}

} // namespace bench
