#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace trhost::effects::platform {

/// A file of fixed size in memory, locked for as long as the process lives and keeps it.
///
/// In a forked child the memory is the child's own and empty, and the file is not the child's.
///
/// Threading: one at a time in a process, made and let go on any thread.
class OwnedMapping {
public:
    /// Makes a file of zero bytes beside the path and locks it. Nobody sees it under the path before Publish.
    /// @throws file_exception.
    OwnedMapping(std::string inPath, std::size_t inSize);
    /// Unmaps. A file that was not published is removed.
    ~OwnedMapping();
    OwnedMapping(const OwnedMapping&) = delete;
    OwnedMapping& operator=(const OwnedMapping&) = delete;

    void* Memory() const noexcept { return mMemory; }
    /// Writes the memory to the disk and gives the file its path.
    /// @throws file_exception.
    void Publish();
    /// Removes the file and gives up the lock; the memory stays. Nothing in a forked child.
    void Remove() noexcept;

private:
    void Map();
    static void LeaveToParent() noexcept;

    const std::string mPath;
    const std::size_t mSize;
    std::string mName; // that the file has now; empty when it has none
    int mFile = -1;
    void* mMemory = nullptr;
};

/// A file whose owner lives no more, locked by us meanwhile.
class AbandonedFile {
public:
    /// @return none when its owner lives, another process is about it, it is gone, or cannot be opened.
    static std::optional<AbandonedFile> Claim(const std::string& inPath);
    AbandonedFile(AbandonedFile&& inOther) noexcept;
    AbandonedFile& operator=(AbandonedFile&&) = delete;
    ~AbandonedFile();

    /// Up to so many bytes from its start; empty when it cannot be read.
    std::string Read(std::size_t inMostBytes) const;
    /// Since it was written to last, by the system's clock.
    std::int64_t AgeInSeconds() const;
    void Remove() noexcept;

private:
    AbandonedFile(std::string inPath, int inFile) : mPath(std::move(inPath)), mFile(inFile) {}

    std::string mPath;
    int mFile;
};

/// Differs from one start of the machine to the next; empty when the system does not tell.
std::string GetBootID();
long long GetProcessNumber();

} // namespace trhost::effects::platform
