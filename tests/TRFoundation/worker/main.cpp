// A process of its own that works on a media cache, for tests of what happens between processes and when
// one is killed. Usage: media_cache_worker STATE_FOLDER MODE ...
//   add DOCUMENT FIRST COUNT THREADS   adds COUNT items from stream FIRST on, then ends
//   add-forever DOCUMENTS FIRST        adds to documents 0 to DOCUMENTS-1 in turn; after each answer of the
//                                      database writes "document stream" and a line feed to standard output
//   read-forever DOCUMENTS             reads them all; ends with status 1 when a record is damaged

#include <TR/MediaAcceleratorDatabase.h>
#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <kiocore/classref/ClassFactory.h>

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;

const Guid kState("11111111-2222-3333-4444-555555555555");

Guid Document(unsigned inNumber)
{
    return Guid::FromHash(std::as_bytes(std::span(&inNumber, 1)), 7);
}

int Add(TR::IMediaAcceleratorDatabase& inDatabase, const UTF16String& inFile, unsigned inDocument,
        unsigned long inStream)
{
    return inDatabase.Add(Document(inDocument), kState, u"/media/shared.wav", inStream, u"k", inFile, true);
}

int AddMany(TR::IMediaAcceleratorDatabase& inDatabase, const UTF16String& inFile, char** inArguments)
{
    const unsigned document = static_cast<unsigned>(std::atoi(inArguments[0]));
    const unsigned first = static_cast<unsigned>(std::atoi(inArguments[1]));
    const unsigned count = static_cast<unsigned>(std::atoi(inArguments[2]));
    const unsigned threads = static_cast<unsigned>(std::atoi(inArguments[3]));
    std::atomic<unsigned> next{0};
    std::atomic<int> failures{0};
    std::vector<std::thread> workers;
    for (unsigned t = 0; t < threads; ++t) {
        workers.emplace_back([&] {
            for (unsigned i = next++; i < count; i = next++) {
                failures += Add(inDatabase, inFile, document, first + i) < 0;
            }
        });
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    return failures == 0 ? 0 : 1;
}

[[noreturn]] void AddForever(TR::IMediaAcceleratorDatabase& inDatabase, const UTF16String& inFile,
                             char** inArguments)
{
    const unsigned documents = static_cast<unsigned>(std::atoi(inArguments[0]));
    for (unsigned long stream = std::strtoul(inArguments[1], nullptr, 10);; ++stream) {
        const unsigned document = static_cast<unsigned>(stream % documents);
        if (Add(inDatabase, inFile, document, stream) >= 0) {
            const std::string line = std::to_string(document) + " " + std::to_string(stream) + "\n";
            if (write(STDOUT_FILENO, line.data(), line.size()) < 0) {
                std::exit(2);
            }
        }
    }
}

[[noreturn]] void ReadForever(char** inArguments)
{
    const unsigned documents = static_cast<unsigned>(std::atoi(inArguments[0]));
    std::vector<std::size_t> seen(documents);
    for (unsigned n = 0;; n = (n + 1) % documents) {
        try {
            const auto entry = TR::MediaAcceleratorDatabase::ReadEntry(Document(n), kState);
            const std::size_t count = entry ? entry->GetItemCount() : 0;
            if (count < seen[n]) {
                std::fprintf(stderr, "document %u went from %zu items to %zu\n", n, seen[n], count);
                std::exit(1);
            }
            seen[n] = count;
        } catch (const std::exception& error) {
            std::fprintf(stderr, "document %u: %s\n", n, error.what());
            std::exit(1);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4) {
        return 2;
    }
    const UTF16String root = kiocore::utility::ToUTF16(argv[1]);
    const std::string mode = argv[2];
    BE::GetBackend()->GetPreferences()->SetDefaultsBelow(root);
    BE::GetBackend()->GetPreferences()->SetDurability(kiocore::filesupport::Durability::kNone);
    TR::TRFoundation::Initialize();
    const InterfaceRef<TR::IMediaAcceleratorDatabase> database =
        kiocore::classref::ClassFactory::CreateClassInstanceRef(TR::kMediaAcceleratorDatabaseClassID);
    const UTF16String file = root + u"/Media Cache Files/shared.cfa";
    int result = 2;
    if (mode == "add" && argc == 7) {
        result = AddMany(*database, file, argv + 3);
    } else if (mode == "add-forever" && argc == 5) {
        AddForever(*database, file, argv + 3);
    } else if (mode == "read-forever") {
        ReadForever(argv + 3);
    }
    TR::TRFoundation::Shutdown();
    return result;
}
