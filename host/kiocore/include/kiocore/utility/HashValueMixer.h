#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Guid.h>

#include <cstddef>
#include <cstring>
#include <memory>

namespace kiocore::utility {

/// Collects bytes for a hash, piece by piece. How they were cut into pieces makes no difference.
///
/// Keys are short, so the first bytes are only put one behind the other and hashed in one go at the end; a
/// running hash is made only for what does not fit.
///
/// Threading: one thread at a time.
class HashValueMixerState {
public:
    HashValueMixerState() = default;

private:
    friend void UpdateHashState(HashValueMixerState&, const void*, std::size_t);
    friend Guid GetHashResult(const HashValueMixerState&);

    KIO_EXPORT void UpdateLong(const void* inBytes, std::size_t inSize);
    KIO_EXPORT Guid Result() const;

    std::size_t mSize = 0; // bytes in mBytes, while there is no running hash
    std::byte mBytes[240]; // as much as the hash takes by its short way
    std::shared_ptr<void> mRunning;
};

inline void UpdateHashState(HashValueMixerState& ioState, const void* inBytes, std::size_t inSize)
{
    if (!ioState.mRunning && inSize <= sizeof(ioState.mBytes) - ioState.mSize) [[likely]] {
        std::memcpy(ioState.mBytes + ioState.mSize, inBytes, inSize);
        ioState.mSize += inSize;
    } else {
        ioState.UpdateLong(inBytes, inSize);
    }
}

/// The same as Guid::FromHash of all bytes in one run. More may be added afterwards.
inline Guid GetHashResult(const HashValueMixerState& inState)
{
    return inState.Result();
}

} // namespace kiocore::utility

namespace kiocore {
using utility::GetHashResult;
using utility::HashValueMixerState;
using utility::UpdateHashState;
} // namespace kiocore
