#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiocore/utility/Guid.h>

#include <cstdint>

namespace VF {

/// Frames that anyone in the process may need again, by key, within a byte budget. When a new frame would
/// exceed it, those of the lowest retention value go first, among these the one used longest ago.
///
/// Threading: any thread. The lock is cut into shards, of which a thread that looks for a frame takes only
/// its own; whoever changes what is kept takes all. Uses between two additions count as simultaneous. Frames
/// are let go unlocked.
class KIO_EXPORT SharedVideoFrameCache {
public:
    /// Counts as a use.
    /// @return empty when there is none under this key.
    static MF::IVideoFrameRef RetrieveFromCache(const kiocore::Guid& inKey);
    /// Keeps a frame, in place of one that had the key. Call its PrepareForSharing first. A frame of more
    /// than the whole budget is not kept, and an empty one is ignored.
    /// @param inRetention  0 and up; more stays longer.
    static void AddToCache(const kiocore::Guid& inKey, const MF::IVideoFrameRef& inFrame, int inRetention);
    static void RemoveFromCache(const kiocore::Guid& inKey);
    /// Lets everything go.
    static void Clear();

    /// 512 MiB, or an eighth of the machine's memory if that is less, unless set. Takes effect at once.
    static void SetByteBudget(std::uint64_t inBytes);

    struct Statistics {
        std::uint64_t bytes = 0;
        std::uint64_t frames = 0;
        std::uint64_t budgetBytes = 0;
    };
    static Statistics GetStatistics();
};

} // namespace VF
