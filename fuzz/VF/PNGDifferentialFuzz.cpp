// The fast decoder of PNG against libpng, and its decompression against zlib. Whatever is mutated, rows
// before they are compressed, the compressed bytes, chunks, the sums over them are put right again, so that
// damage comes as far as it can.

#include "BothDecoders.h"

#include <png/Inflater.h>

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* ioBytes, std::size_t inSize, std::size_t inMostSize);

namespace {

using Bytes = std::string;

constexpr std::size_t kMostOutput = 1 << 17;
constexpr std::size_t kStartSize = 8;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

Bytef* At(Bytes& ioBytes)
{
    return reinterpret_cast<Bytef*>(ioBytes.data());
}
const Bytef* At(std::string_view inBytes)
{
    return reinterpret_cast<const Bytef*>(inBytes.data());
}

std::uint32_t BigEndian(std::string_view inBytes, std::size_t inAt)
{
    std::uint32_t value = 0;
    for (std::size_t byte = 0; byte < 4; ++byte) {
        value = value << 8 | static_cast<unsigned char>(inBytes[inAt + byte]);
    }
    return value;
}
Bytes BigEndian(std::uint64_t inValue)
{
    Bytes bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(inValue >> shift);
    }
    return bytes;
}

struct Chunk {
    Bytes type;
    Bytes contents;
};

std::vector<Chunk> Split(std::string_view inFile)
{
    std::vector<Chunk> chunks;
    for (std::size_t at = kStartSize; at + 12 <= inFile.size();) {
        const std::size_t length = BigEndian(inFile, at);
        if (length > inFile.size() - at - 12) {
            break;
        }
        chunks.push_back({Bytes(inFile.substr(at + 4, 4)), Bytes(inFile.substr(at + 8, length))});
        at += length + 12;
    }
    return chunks;
}

Bytes Join(const std::vector<Chunk>& inChunks)
{
    Bytes file("\x89PNG\r\n\x1A\n", kStartSize);
    for (const Chunk& chunk : inChunks) {
        const Bytes body = chunk.type + chunk.contents;
        file += BigEndian(chunk.contents.size()) + body +
                BigEndian(crc32(0, At(std::string_view(body)), static_cast<uInt>(body.size())));
    }
    return file;
}

Bytes DataOf(const std::vector<Chunk>& inChunks)
{
    Bytes data;
    for (const Chunk& chunk : inChunks) {
        data += chunk.type == "IDAT" ? chunk.contents : "";
    }
    return data;
}

/// All that zlib gets out of a stream. outIsWhole: up to a right sum at its end.
Bytes Inflated(std::string_view inData, bool& outIsWhole, std::size_t* outUsed = nullptr)
{
    z_stream stream{};
    inflateInit2(&stream, 15);
    static const std::unique_ptr<Bytef[]> output(new Bytef[kMostOutput]);
    stream.next_in = const_cast<Bytef*>(At(inData));
    stream.avail_in = static_cast<uInt>(inData.size());
    stream.next_out = output.get();
    stream.avail_out = static_cast<uInt>(kMostOutput);
    outIsWhole = inflate(&stream, Z_FINISH) == Z_STREAM_END;
    Bytes result(reinterpret_cast<const char*>(output.get()), stream.total_out);
    if (outUsed) {
        *outUsed = stream.total_in;
    }
    inflateEnd(&stream);
    return result;
}

Bytes Deflated(std::string_view inRows, std::minstd_rand& ioRandom)
{
    static constexpr int kStrategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    z_stream stream{};
    deflateInit2(&stream, static_cast<int>(ioRandom() % 10), Z_DEFLATED, 9 + static_cast<int>(ioRandom() % 7),
                 1 + static_cast<int>(ioRandom() % 9), kStrategies[ioRandom() % std::size(kStrategies)]);
    Bytes output(deflateBound(&stream, static_cast<uLong>(inRows.size())) + 64, '\0');
    stream.next_in = const_cast<Bytef*>(At(inRows));
    stream.avail_in = static_cast<uInt>(inRows.size());
    stream.next_out = At(output);
    stream.avail_out = static_cast<uInt>(output.size());
    deflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

/// The fast decoder's decompression with little input and little room at a time.
std::optional<Bytes> InflatedInPieces(std::string_view inData, std::size_t inStep, std::size_t inRoom)
{
    using VF::InflateBuffers;
    const auto inflater = std::make_unique<VF::Inflater>();
    std::vector<std::uint8_t> input;
    std::vector<std::uint8_t> window(InflateBuffers::kHistory + inRoom + InflateBuffers::kOutputPadding);
    std::size_t given = 0;
    Bytes output;
    InflateBuffers buffers;
    buffers.outputBegin = buffers.output = window.data();
    buffers.outputEnd = window.data() + window.size() - InflateBuffers::kOutputPadding;
    for (;;) {
        const std::uint8_t* const before = buffers.output;
        const auto status = inflater->Run(buffers);
        output.append(before, static_cast<const std::uint8_t*>(buffers.output));
        switch (status) {
        case VF::Inflater::Status::kNeedsInput: {
            Require(given < inData.size() || !buffers.inputIsAll);
            std::vector<std::uint8_t> next(buffers.input, buffers.inputEnd);
            const std::string_view more = inData.substr(given, inStep);
            next.insert(next.end(), more.begin(), more.end());
            given += more.size();
            const std::size_t size = next.size();
            // A sanitizer sees whoever reads further than it may.
            next.resize(size + InflateBuffers::kInputPadding);
            next.shrink_to_fit();
            input = std::move(next);
            buffers.input = input.data();
            buffers.inputEnd = input.data() + size;
            buffers.inputIsAll = given == inData.size();
            break;
        }
        case VF::Inflater::Status::kNeedsRoom: {
            if (output.size() > kMostOutput) {
                return {};
            }
            const std::size_t kept =
                std::min<std::size_t>(InflateBuffers::kHistory, buffers.output - window.data());
            std::memmove(window.data(), buffers.output - kept, kept);
            buffers.output = window.data() + kept;
            break;
        }
        case VF::Inflater::Status::kDone:
            if (inflater->WantedAdler() !=
                adler32(1, At(std::string_view(output)), static_cast<uInt>(output.size()))) {
                return {};
            }
            return output;
        case VF::Inflater::Status::kDamaged:
            return {};
        }
    }
}

void CompareDecompression(std::string_view inFile)
{
    const Bytes data = DataOf(Split(inFile));
    bool isWhole = false;
    const Bytes expected = Inflated(data, isWhole);
    if (expected.size() >= kMostOutput) {
        return;
    }
    const std::size_t step = 1 + data.size() % 700;
    const auto ours = InflatedInPieces(data, step, 1 + step * 7);
    Require(ours.has_value() == isWhole);
    Require(!ours || *ours == expected);
}

void CompareDecoders(std::string_view inFile)
{
    // A picture of many megapixels fits in a few kilobytes; each would take the time of thousands of others.
    if (inFile.size() < 33 || std::uint64_t{BigEndian(inFile, 16)} * BigEndian(inFile, 20) > kMostOutput) {
        return;
    }
    const support::Decoded fast = support::DecodeFast(inFile);
    if (fast.isTaken) {
        const support::Decoded expected = support::DecodeWithLibpng(inFile);
        Require(expected.isTaken);
        Require(fast.pixels == expected.pixels);
    }
}

Bytes Mutated(Bytes inBytes, std::size_t inMostSize)
{
    const std::size_t size = inBytes.size();
    inBytes.resize(std::max(inMostSize, size));
    inBytes.resize(LLVMFuzzerMutate(At(inBytes), size, inBytes.size()));
    return inBytes;
}

/// Gives a stream the sum that belongs to what it yields, if it yields anything whole.
void MendSum(Bytes& ioData)
{
    if (ioData.size() < 6) {
        return;
    }
    bool isWhole = false;
    std::size_t used = 0;
    const Bytes output = Inflated(ioData, isWhole, &used);
    if (!isWhole && used >= 4 && used <= ioData.size()) {
        const auto sum = adler32(1, At(std::string_view(output)), static_cast<uInt>(output.size()));
        ioData.replace(used - 4, 4, BigEndian(sum));
    }
}

/// As many rows as the header says, of that length, with filters that there are.
void FitRows(const Bytes& inHeader, Bytes& ioRows)
{
    static constexpr std::size_t kChannels[] = {1, 0, 3, 1, 2, 0, 4};
    const std::size_t width = BigEndian(inHeader, 0);
    const std::size_t height = BigEndian(inHeader, 4);
    const auto type = static_cast<unsigned char>(inHeader[9]);
    const std::size_t row =
        1 + (width * (type < 7 ? kChannels[type] : 1) * static_cast<unsigned char>(inHeader[8]) + 7) / 8;
    if (width * height > kMostOutput || row * height > kMostOutput) {
        return;
    }
    const Bytes pattern = ioRows.empty() ? Bytes(1, '\0') : ioRows;
    while (ioRows.size() < row * height) {
        ioRows += pattern;
    }
    ioRows.resize(row * height);
    for (std::size_t at = 0; at < ioRows.size(); at += row) {
        ioRows[at] = static_cast<char>(static_cast<unsigned char>(ioRows[at]) % 5);
    }
}

void MutateHeader(Bytes& ioHeader, std::minstd_rand& ioRandom)
{
    if (ioHeader.size() != 13) {
        return;
    }
    static constexpr char kTypes[] = {0, 2, 4, 6, 6, 2};
    ioHeader.replace(0, 8, BigEndian(1 + ioRandom() % 90) + BigEndian(1 + ioRandom() % 40));
    ioHeader[8] = ioRandom() % 2 ? 8 : 16;
    ioHeader[9] = kTypes[ioRandom() % std::size(kTypes)];
}

/// In place of all chunks of data, others.
void ReplaceData(std::vector<Chunk>& ioChunks, const Bytes& inData, std::minstd_rand& ioRandom)
{
    auto first = std::find_if(ioChunks.begin(), ioChunks.end(),
                              [](const Chunk& inChunk) { return inChunk.type == "IDAT"; });
    auto at = static_cast<std::size_t>(first - ioChunks.begin());
    std::erase_if(ioChunks, [](const Chunk& inChunk) { return inChunk.type == "IDAT"; });
    const std::size_t most = ioRandom() % 4 ? inData.size() + 1 : 1 + ioRandom() % 40;
    for (std::size_t done = 0; done < inData.size();) {
        const std::size_t size = ioRandom() % 3 ? most : ioRandom() % most;
        ioChunks.insert(ioChunks.begin() + static_cast<std::ptrdiff_t>(at++),
                        {"IDAT", inData.substr(done, size)});
        done += size;
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* ioBytes, std::size_t inSize,
                                               std::size_t inMostSize, unsigned inSeed)
{
    std::minstd_rand random(inSeed);
    std::vector<Chunk> chunks = Split({reinterpret_cast<const char*>(ioBytes), inSize});
    const unsigned kind = random() % 8;
    if (chunks.empty() || kind == 0) {
        inSize = LLVMFuzzerMutate(ioBytes, inSize, inMostSize);
        chunks = Split({reinterpret_cast<const char*>(ioBytes), inSize});
        if (chunks.empty()) {
            return inSize;
        }
    } else if (kind == 1) {
        Chunk& chunk = chunks[random() % chunks.size()];
        chunk.contents = Mutated(chunk.contents, chunk.contents.size() + 16);
    } else {
        Bytes data = DataOf(chunks);
        if (kind < 5) {
            bool isWhole = false;
            Bytes rows = Inflated(data, isWhole);
            if (random() % 3 == 0) {
                MutateHeader(chunks.front().contents, random);
            }
            rows = Mutated(rows, rows.size() + 64);
            if (random() % 8 && chunks.front().contents.size() == 13) {
                FitRows(chunks.front().contents, rows);
            }
            data = Deflated(rows, random);
        }
        if (kind >= 4) {
            data = Mutated(data, data.size() + 16);
            if (random() % 4) {
                MendSum(data);
            }
        }
        ReplaceData(chunks, data, random);
    }
    const Bytes file = Join(chunks);
    const std::size_t size = std::min(file.size(), inMostSize);
    std::memcpy(ioBytes, file.data(), size);
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const std::string_view file(reinterpret_cast<const char*>(inBytes), inSize);
    CompareDecoders(file);
    CompareDecompression(file);
    return 0;
}
