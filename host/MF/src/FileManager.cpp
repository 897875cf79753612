#include <MF/FileManager.h>

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace MF {
namespace {

using kiocore::UTF16String;
using kiocore::UTF16View;

struct OpenFile {
    unsigned long long number;
    FileManager::TryToClose tryToClose;
    std::thread::id askedBy; // while its closer is being called; guarded by Registry::lock
};

struct Registry {
    std::mutex lock; // guards the members below
    std::condition_variable answered;
    std::multimap<UTF16String, std::shared_ptr<OpenFile>, std::less<>> files;
    unsigned long long lastNumber = 0;
    std::atomic<std::size_t> count{
        0}; // of files: lets the usual question, when none is open, go without the lock

    bool Contains(UTF16View inPath, unsigned long long inNumber) const
    {
        auto [it, end] = files.equal_range(inPath);
        return std::any_of(it, end, [=](const auto& entry) { return entry.second->number == inNumber; });
    }

    void Remove(UTF16View inPath, unsigned long long inNumber)
    {
        auto [it, end] = files.equal_range(inPath);
        for (; it != end; ++it) {
            if (it->second->number == inNumber) {
                files.erase(it);
                count.store(files.size(), std::memory_order_release);
                return;
            }
        }
    }
};

// Never destroyed: files may be closed by objects that go at exit.
Registry& TheRegistry()
{
    static auto* const registry = new Registry;
    return *registry;
}

bool IsRegistered(UTF16View inPath)
{
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    return registry.files.contains(inPath);
}

bool Ask(const FileManager::TryToClose& inTryToClose) noexcept
{
    try {
        return inTryToClose && inTryToClose();
    } catch (...) {
        return false; // whoever cannot answer keeps it open
    }
}

} // namespace

FileManager::ScOpenFile::ScOpenFile(UTF16View inPath, TryToClose inTryToClose) : mNumber(0), mPath(inPath)
{
    auto file = std::make_shared<OpenFile>();
    file->tryToClose = std::move(inTryToClose);
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    file->number = mNumber = ++registry.lastNumber;
    registry.files.emplace(mPath, file);
    registry.count.store(registry.files.size(), std::memory_order_release);
    mFile = file;
}

FileManager::ScOpenFile::~ScOpenFile()
{
    Registry& registry = TheRegistry();
    const auto file = std::static_pointer_cast<OpenFile>(mFile);
    std::unique_lock lock(registry.lock);
    registry.Remove(mPath, mNumber);
    // The closer uses what its owner is about to destroy. Called on this thread, it is what destroys us.
    registry.answered.wait(lock, [&] {
        return file->askedBy == std::thread::id() || file->askedBy == std::this_thread::get_id();
    });
}

bool FileManager::TryToCloseFileWithoutBlocking(UTF16View inPath)
{
    KIO_HOST_CALL("MF::FileManager::TryToCloseFileWithoutBlocking", inPath);
    Registry& registry = TheRegistry();
    if (registry.count.load(std::memory_order_acquire) == 0) {
        return true;
    }
    std::vector<std::shared_ptr<OpenFile>> files;
    {
        std::lock_guard lock(registry.lock);
        auto [it, end] = registry.files.equal_range(inPath);
        for (; it != end; ++it) {
            files.push_back(it->second);
        }
    }
    for (const auto& file : files) {
        {
            std::lock_guard lock(registry.lock);
            if (file->askedBy != std::thread::id() || !registry.Contains(inPath, file->number)) {
                continue; // being asked by somebody else, whom we do not wait for; or gone
            }
            file->askedBy = std::this_thread::get_id();
        }
        const bool closed = Ask(file->tryToClose);
        {
            std::lock_guard lock(registry.lock);
            file->askedBy = std::thread::id();
            if (closed) {
                registry.Remove(inPath, file->number);
            }
        }
        registry.answered.notify_all();
    }
    return !IsRegistered(inPath);
}

bool FileManager::IsOpen(UTF16View inPath)
{
    KIO_HOST_CALL("MF::FileManager::IsOpen", inPath);
    return IsRegistered(inPath);
}

} // namespace MF
