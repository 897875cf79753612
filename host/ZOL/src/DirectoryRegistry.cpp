#include <ZOL/DirectoryRegistry.h>

#include <kiocore/debug/Trace.h>

#include <map>
#include <mutex>

namespace ZOL {
namespace {

struct Registry {
    std::mutex lock;
    std::map<ImmutableString, UTF16String> folders;
};

// Never destroyed: objects that go at exit may still ask.
Registry& TheRegistry()
{
    static auto* const registry = new Registry;
    return *registry;
}

} // namespace

void DirectoryRegistry::RegisterDirectory(const ImmutableString& inName, kiocore::UTF16View inFolder)
{
    KIO_HOST_CALL("ZOL::DirectoryRegistry::RegisterDirectory", inName, inFolder);
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    registry.folders.insert_or_assign(inName, UTF16String(inFolder));
}

int DirectoryRegistry::FindDirectory(const ImmutableString& inName, UTF16String& outFolder)
{
    KIO_HOST_CALL("ZOL::DirectoryRegistry::FindDirectory", inName);
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    const auto found = registry.folders.find(inName);
    if (found == registry.folders.end()) {
        return -1;
    }
    outFolder = found->second;
    return 0;
}

void DirectoryRegistry::UnregisterDirectory(const ImmutableString& inName)
{
    KIO_HOST_CALL("ZOL::DirectoryRegistry::UnregisterDirectory", inName);
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    registry.folders.erase(inName);
}

} // namespace ZOL
