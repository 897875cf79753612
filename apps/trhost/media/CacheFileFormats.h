#pragma once

#include <bit>
#include <cstdint>
#include <limits>

/// The bytes of the files that the media module makes; docs/cache-files.md explains them.
/// All numbers are little-endian, and so is every machine that we build for.
namespace trhost::media {

static_assert(std::endian::native == std::endian::little,
              "the structures below are written as they lie in memory");

inline constexpr char kConformedAudioMagic[8] = {'T', 'R', 'H', '-', 'C', 'F', 'A', '\n'};
inline constexpr char kPeakMagic[8] = {'T', 'R', 'H', '-', 'P', 'E', 'K', '\n'};
inline constexpr char kVideoIndexMagic[8] = {'T', 'R', 'H', '-', 'M', 'V', 'I', '\n'};
inline constexpr std::uint32_t kCacheFileVersion = 1; ///< of each of the three

inline constexpr int kConformedSampleRate = 48000;

/// ".cfa": this header, then frameCount x channels 32-bit floats, interleaved.
struct ConformedAudioHeader {
    char magic[8];
    std::uint32_t version;
    std::uint32_t headerBytes; ///< where the samples start
    std::uint32_t sampleRate;  ///< 48000
    std::uint32_t channels;
    std::uint64_t frameCount;
    std::int32_t sourceStreamIndex;
    std::uint32_t sourceSampleRate;
    std::uint64_t channelMask; ///< speaker positions, bit order of WAVE files; 0 unknown
    std::uint8_t reserved[16]; ///< 0
};
static_assert(sizeof(ConformedAudioHeader) == 64);

inline constexpr std::uint32_t kPeakFramesPerBucket = 256; ///< of level 0
inline constexpr std::uint32_t kPeakLevelFactor = 4;
inline constexpr std::uint32_t kPeakMaxLevels = 16;

struct PeakLevel {
    std::uint64_t offset; ///< in the file
    std::uint64_t bucketCount;
};

/// A bucket is one of these per channel.
struct Peak {
    float low;
    float high;
};

/// ".pek": this header, then the buckets of each level where its entry says.
struct PeakHeader {
    char magic[8];
    std::uint32_t version;
    std::uint32_t headerBytes;
    std::uint32_t sampleRate; ///< 48000
    std::uint32_t channels;
    std::uint64_t frameCount; ///< of the conformed audio
    std::int32_t sourceStreamIndex;
    std::uint32_t levelCount;
    std::uint32_t framesPerBucket; ///< of level 0
    std::uint32_t levelFactor;     ///< buckets of one level that make one of the next
    std::uint8_t reserved[16];     ///< 0
    PeakLevel levels[kPeakMaxLevels];
};
static_assert(sizeof(PeakHeader) == 320);

inline constexpr std::int64_t kNoTimestamp = std::numeric_limits<std::int64_t>::min();

/// ".mcvideoindex": this header, then the entries in the order in which the packets lie in the file.
struct VideoIndexHeader {
    char magic[8];
    std::uint32_t version;
    std::uint32_t headerBytes;
    std::int32_t timeBaseNumerator; ///< seconds a tick = numerator / denominator
    std::int32_t timeBaseDenominator;
    std::uint64_t entryCount;
    std::int32_t sourceStreamIndex;
    std::uint32_t keyFrameCount;
    std::int64_t startTicks; ///< what the timestamps read at the start of the file (sample 0 of the ".cfa")
    std::uint32_t width;
    std::uint32_t height;
    std::uint8_t reserved[8]; ///< 0
};
static_assert(sizeof(VideoIndexHeader) == 64);

enum VideoIndexFlags : std::uint32_t {
    kVideoIndexFlag_KeyFrame = 1,
    kVideoIndexFlag_Discard = 2, ///< needed for decoding, not for showing
    kVideoIndexFlag_Corrupt = 4,
};

struct VideoIndexEntry {
    std::int64_t pts; ///< kNoTimestamp when unknown; so is dts
    std::int64_t dts;
    std::int64_t position; ///< byte in the media file; -1 unknown
    std::uint32_t bytes;
    std::uint32_t flags;
};
static_assert(sizeof(VideoIndexEntry) == 32);

} // namespace trhost::media
