#pragma once

#include <kiocore/utility/UTF16String.h>

#include <optional>
#include <string>
#include <vector>

namespace trhost {

/// What is in a media file and which cache files belong to it, so that neither has to be found out again.
/// A record is complete when it has an up-to-date summary and every item that the summary names: a run that
/// was stopped half-way, and a cache file that somebody deleted, both show.
///
/// Threading: a plain value.
struct MediaSummary {
    struct Stream {
        int index = 0;
        std::string kind; ///< "audio", "video"
        std::string codec;
        int sampleRate = 0;
        int channels = 0;
        int width = 0;
        int height = 0;
        double framesPerSecond = 0;
        double durationSeconds = -1;
        std::string language;
    };
    struct Item {
        kiocore::UTF16String streamID;
        kiocore::UTF16String key;
        std::string reason; ///< why it could not be made; empty for one that was
    };

    std::string container;
    double durationSeconds = -1;
    std::string reason; ///< why nothing was made; empty when something was
    std::vector<Stream> streams;
    std::vector<Item> items;

    /// The bytes of the file: one JSON object.
    std::string GetBytes() const;
    /// @return empty when the bytes are no summary that this build understands.
    static std::optional<MediaSummary> FromBytes(const std::string& inBytes);
    /// The same for a file; empty also when it cannot be read.
    static std::optional<MediaSummary> Load(const kiocore::UTF16String& inPath);
};

} // namespace trhost
