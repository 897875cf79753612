#include <kiocore/utility/HashValueMixer.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace kiocore::utility {
namespace {

Guid GuidOfHash(XXH128_hash_t inHash)
{
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, inHash);
    Guid::Bytes bytes;
    std::memcpy(bytes.data(), canonical.digest, bytes.size());
    return Guid(bytes);
}

} // namespace

void HashValueMixerState::UpdateLong(const void* inBytes, std::size_t inSize)
{
    if (!mRunning) {
        mRunning = std::shared_ptr<void>(
            XXH3_createState(), [](void* inState) { XXH3_freeState(static_cast<XXH3_state_t*>(inState)); });
        if (!mRunning) {
            throw std::bad_alloc();
        }
        auto* const state = static_cast<XXH3_state_t*>(mRunning.get());
        XXH3_128bits_reset(state);
        XXH3_128bits_update(state, mBytes, mSize);
    }
    XXH3_128bits_update(static_cast<XXH3_state_t*>(mRunning.get()), inBytes, inSize);
}

Guid HashValueMixerState::Result() const
{
    if (mRunning) {
        return GuidOfHash(XXH3_128bits_digest(static_cast<const XXH3_state_t*>(mRunning.get())));
    }
    return GuidOfHash(XXH3_128bits(mBytes, mSize));
}

} // namespace kiocore::utility
