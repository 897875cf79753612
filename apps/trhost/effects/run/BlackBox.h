#pragma once

#include "RunningCalls.h"

#include <kiocore/utility/UTF16String.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace trhost::effects {

namespace platform {
class OwnedMapping;
}

/// Keeps in a file which plug-in each thread is in, so that it is known even of a process that had no chance
/// to say: one that was killed, or whose machine went down. The process finds such boxes at its next start,
/// and takes what they name for suspects, no more: whoever kills a process mid-way is not the plug-in.
///
/// The file is memory shared with the system. What was entered survives any end of the process, to the last
/// call. When the machine goes down, what survives is what the system had written by then: usually what ran
/// up to half a minute before; the empty box itself is written when it is made. A box lies on disk while its
/// process lives, locked, so that a process number that is used again misleads nobody; a clean end removes
/// it.
///
/// A forked child neither writes to its parent's box nor keeps it locked, and has none.
///
/// Threading: Enter, Leave and MarkCrashReported on any thread.
class BlackBox {
public:
    /// Makes "<process number>-<start>.box". Its whole size is taken on the disk, so that entering cannot
    /// fail.
    /// @param inFolder  made when missing; on a file system that knows locks.
    /// @throws file_exception; kio_exception (kError_BadArgument) while the process has one.
    explicit BlackBox(kiocore::UTF16View inFolder);
    /// Removes the file.
    ~BlackBox();
    BlackBox(const BlackBox&) = delete;
    BlackBox& operator=(const BlackBox&) = delete;

    /// A few nanoseconds, no system call; the first call of a thread takes a slot of 64 for it. Names are cut
    /// after CallEntry::kLongestName bytes. Calls nest; the innermost four are told apart.
    void Enter(std::string_view inMatchName) noexcept { mCalls->Enter(inMatchName); }
    void Leave() noexcept { mCalls->Leave(); }

    /// Says that the process ends with a crash that is reported elsewhere: its box makes nobody a suspect.
    /// May be called in a signal handler; does nothing when there is no box.
    static void MarkCrashReported() noexcept;

private:
    const std::shared_ptr<platform::OwnedMapping> mMapping;
    std::unique_ptr<RunningCalls> mCalls;
};

/// A plug-in that was running when its process ended.
struct Suspect {
    std::string matchName;
    bool
        machineWentDown; ///< since then the machine was started anew, so it may have ended everything at once
};

/// The plug-ins that were running in processes that live no more, each once a box. Their boxes are removed,
/// as are damaged ones, which name nobody. A box is read by one of several processes that ask at once. Boxes
/// that cannot be opened are left alone.
/// @param inKeep  gets the suspects of one box, when there are any, before it is removed. When this throws,
///     the box stays, and the exception passes through.
std::vector<Suspect> ReadSuspects(kiocore::UTF16View inFolder,
                                  const std::function<void(const std::vector<Suspect>&)>& inKeep = {});

} // namespace trhost::effects
