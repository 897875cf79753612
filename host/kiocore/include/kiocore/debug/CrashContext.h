#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Dictionary.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kiocore::debug {

/// What the calling thread is about, for whoever finds out why the process died: a stack of dictionaries, the
/// innermost last. Every entry owns what it shows, so that a crash handler on the same thread can read it
/// whatever other threads free meanwhile.
///
/// The first push of a thread gives it an alternate signal stack (see CrashHandling.h) and memory for its
/// stack; later ones allocate only where the stack grows deeper than ever before. What an entry held is freed
/// when another one takes its place on the stack, or with the thread.
///
/// Threading: each thread has a stack of its own.
/// @throws std::bad_alloc.
KIO_EXPORT void PushCrashContextForCurrentThread(utility::Dictionary inEntry);
/// An entry of one text: for hot paths. Costs next to nothing when the thread's last entry at this depth was
/// made of copies of the same two texts.
KIO_EXPORT void PushCrashContextForCurrentThread(const utility::ImmutableString& inKey,
                                                 const utility::ImmutableString& inText);
/// Does nothing when the stack is empty.
KIO_EXPORT void PopCrashContextForCurrentThread() noexcept;

namespace detail {

/// A view of one thread's stack. Reading takes no lock, no memory and no first-use initialisation.
class KIO_EXPORT CrashContextStack {
public:
    std::size_t Depth() const noexcept;
    /// @param inFromInnermost  0 is the entry pushed last; below Depth().
    const utility::Dictionary& At(std::size_t inFromInnermost) const noexcept;

private:
    friend CrashContextStack InspectCrashContextForCurrentThread() noexcept;
    const void* mThread = nullptr;
};

/// May be called in a signal handler; valid there until the next push or pop.
KIO_EXPORT CrashContextStack InspectCrashContextForCurrentThread() noexcept;

/// Drops entries until inDepth are left, for whoever jumped out of frames that would have popped them.
KIO_EXPORT void UnwindCrashContextForCurrentThread(std::size_t inDepth) noexcept;

} // namespace detail
} // namespace kiocore::debug
