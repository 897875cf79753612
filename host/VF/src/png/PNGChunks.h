#pragma once

#include "GrowingBytes.h"
#include "PNGSource.h"

#include <string_view>

namespace VF {

/// The data of a "tEXt" chunk; empty for a keyword or text that PNG does not allow.
std::string PNGTextData(const std::pair<std::string, std::string>& inText);

/// Writes a PNG's frame: what stands around the compressed pixels.
///
/// Threading: one thread at a time.
class PNGChunks {
public:
    explicit PNGChunks(GrowingBytes& ioBytes) : mBytes(ioBytes) {}

    /// Everything up to the pixels, for RGB without alpha.
    void Begin(const PNGSource& inSource);
    /// Between these, the data of a chunk are appended to the bytes: less than 2 GB.
    void BeginChunk(std::string_view inType);
    void EndChunk();
    /// The last chunk.
    void End();

private:
    void AddChunk(std::string_view inType, std::string_view inData);

    GrowingBytes& mBytes;
    std::size_t mChunk = 0; // where it begins
};

} // namespace VF
