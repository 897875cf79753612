#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trhost::effects::platform {

/// The descriptor that the parent is spoken to on.
inline constexpr int kConnectionFile = 3;

/// Makes this process one that plug-ins may be tried in: it dies with its parent, leaves no core dump, has no
/// handler for the signals that end processes, and not more address space than given (0: no limit).
/// @param inParent  the process that started this one.
/// @return false when the parent has gone already.
bool PrepareWorkerProcess(int inParent, std::uint64_t inAddressSpaceBytes);

/// Lines over a descriptor.
///
/// Threading: Read on one thread; Write on any.
class LineConnection {
public:
    explicit LineConnection(int inFile) : mFile(inFile) {}
    int File() const { return mFile; }
    /// Waits for a line. @return false at the end.
    bool Read(std::string& outLine);
    /// @return false when the other side has gone.
    bool Write(std::string_view inLine);

private:
    const int mFile;
    std::string mIncoming;
};

/// Ends without destructors: plug-ins whose state is broken must not run again.
[[noreturn]] void EndAtOnce(int inStatus);

} // namespace trhost::effects::platform
