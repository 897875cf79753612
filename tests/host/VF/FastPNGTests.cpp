#include "BothDecoders.h"
#include "PNGBytes.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <zlib.h>

#include <algorithm>
#include <random>

namespace {

using namespace support;

struct Form {
    const char* name;
    int colorType;
    int depth;
    int bytesPerPixel;
};
constexpr Form kForms[] = {
    {"grey 8", 0, 8, 1},          {"grey 16", 0, 16, 2},          {"RGB 8", 2, 8, 3},
    {"RGB 16", 2, 16, 6},         {"grey and alpha 8", 4, 8, 2},  {"grey and alpha 16", 4, 16, 4},
    {"RGB and alpha 8", 6, 8, 4}, {"RGB and alpha 16", 6, 16, 8},
};

/// Rows of any bytes are the filtered rows of some picture.
std::string RandomRows(const Form& inForm, std::uint32_t inWidth, std::uint32_t inHeight, int inFirstFilter)
{
    std::mt19937 random(inWidth * 1000 + inHeight);
    std::string rows;
    for (std::uint32_t y = 0; y < inHeight; ++y) {
        rows += static_cast<char>((inFirstFilter + y * (y / 5 + 1)) % 5);
        for (std::uint32_t byte = 0; byte < inWidth * inForm.bytesPerPixel; ++byte) {
            rows += static_cast<char>(random() >> (y % 3 ? 8 : 3));
        }
    }
    return rows;
}

std::string FileOf(const Form& inForm, std::uint32_t inWidth, std::uint32_t inHeight,
                   std::string_view inDataChunks)
{
    return std::string(kPNGSignature) + HeaderChunk(inWidth, inHeight, inForm.depth, inForm.colorType) +
           std::string(inDataChunks) + Chunk("IEND");
}

/// Each set of instructions that this processor has; 0 is for a processor that has none of them.
std::vector<std::int64_t> AllTargets()
{
    std::vector<std::int64_t> targets = {0};
    for (std::int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
        targets.push_back(rest & -rest);
    }
    return targets;
}

void ExpectBothTake(const std::string& inFile)
{
    const Decoded expected = DecodeWithLibpng(inFile);
    ASSERT_TRUE(expected.isTaken) << expected.reason;
    for (const std::int64_t target : AllTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::GetChosenTarget().Update(target);
        const Decoded fast = DecodeFast(inFile);
        hwy::GetChosenTarget().DeInit(); // the best again
        ASSERT_TRUE(fast.isTaken);
        const auto [wrong, _] =
            std::mismatch(fast.pixels.begin(), fast.pixels.end(), expected.pixels.begin());
        EXPECT_EQ(wrong - fast.pixels.begin(), expected.pixels.end() - expected.pixels.begin())
            << "is the first byte that differs";
    }
}

TEST(FastPNG, GivesThePixelsThatLibpngGives)
{
    for (const Form& form : kForms) {
        for (std::uint32_t width : {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 33u, 65u}) {
            for (int firstFilter = 0; firstFilter < 5; ++firstFilter) {
                SCOPED_TRACE(std::string(form.name) + ", width " + std::to_string(width) + ", first filter " +
                             std::to_string(firstFilter));
                const std::string rows = RandomRows(form, width, 27, firstFilter);
                ExpectBothTake(FileOf(form, width, 27, Chunk("IDAT", Compressed(rows))));
            }
        }
    }
}

std::string CompressedWith(std::string_view inBytes, int inLevel, int inStrategy, int inWindowBits = 15,
                           int inMemory = 9)
{
    z_stream stream{};
    deflateInit2(&stream, inLevel, Z_DEFLATED, inWindowBits, inMemory, inStrategy);
    std::string bytes(deflateBound(&stream, inBytes.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(inBytes.data()));
    stream.avail_in = static_cast<uInt>(inBytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    deflate(&stream, Z_FINISH);
    bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return bytes;
}

/// Larger than all windows, with repetitions near and far, some as far as there may be.
std::string RepetitiveRows(std::uint32_t inRows, std::size_t inRowSize)
{
    std::string rows;
    std::mt19937 random(7);
    while (rows.size() < inRows * inRowSize) {
        static constexpr std::size_t kDistances[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 258, 5000, 32768};
        const std::size_t distance = kDistances[random() % std::size(kDistances)];
        if (random() % 4 == 0 || distance > rows.size()) {
            for (unsigned count = random() % 200; count > 0; --count) {
                rows += static_cast<char>(random() % 50 * (random() % 50));
            }
            continue;
        }
        for (unsigned length = 3 + random() % 300; length > 0; --length) {
            rows += rows[rows.size() - distance];
        }
    }
    rows.resize(inRows * inRowSize);
    for (std::uint32_t row = 0; row < inRows; ++row) {
        rows[row * inRowSize] = static_cast<char>(row % 5);
    }
    return rows;
}

TEST(FastPNG, TakesEveryWayToCompress)
{
    const Form form = kForms[6];
    const std::string rows = RepetitiveRows(400, 1 + 500 * 4);
    const struct {
        const char* name;
        int level;
        int strategy;
        int windowBits = 15;
        int memory = 9;
    } kCases[] = {
        {"stored", 0, Z_DEFAULT_STRATEGY},
        {"fast", 1, Z_DEFAULT_STRATEGY},
        {"usual", 6, Z_DEFAULT_STRATEGY},
        {"small", 9, Z_DEFAULT_STRATEGY},
        {"fixed codes", 6, Z_FIXED},
        {"without repetitions", 6, Z_HUFFMAN_ONLY},
        {"near repetitions", 6, Z_RLE},
        {"small window", 6, Z_DEFAULT_STRATEGY, 9},
        {"many blocks", 6, Z_DEFAULT_STRATEGY, 15, 1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const std::string data =
            CompressedWith(rows, test.level, test.strategy, test.windowBits, test.memory);
        ExpectBothTake(FileOf(form, 500, 400, Chunk("IDAT", data)));
        std::string pieces; // none of which ends where a block of the file does
        for (std::size_t at = 0; at < data.size(); at += 1021) {
            pieces += Chunk("IDAT", std::string_view(data).substr(at, 1021));
        }
        ExpectBothTake(FileOf(form, 500, 400, pieces));
    }
}

TEST(FastPNG, TakesRowsThatAreLongerThanItsWindow)
{
    const Form form = kForms[7];
    const std::string rows = RepetitiveRows(5, 1 + 65535 * 8);
    ExpectBothTake(FileOf(form, 65535, 5, Chunk("IDAT", CompressedWith(rows, 6, Z_DEFAULT_STRATEGY))));
}

TEST(FastPNG, TakesDataHoweverTheyAreCutIntoChunks)
{
    const Form form = kForms[2];
    const std::string data = Compressed(RandomRows(form, 9, 5, 1));
    std::string single;
    for (const char byte : data) {
        single += Chunk("IDAT") + Chunk("IDAT", std::string_view(&byte, 1));
    }
    ExpectBothTake(FileOf(form, 9, 5, single + Chunk("IDAT") + Chunk("IDAT")));
    for (std::size_t cut = 0; cut <= data.size(); ++cut) {
        SCOPED_TRACE("cut at " + std::to_string(cut) + " of " + std::to_string(data.size()));
        ExpectBothTake(
            FileOf(form, 9, 5, Chunk("IDAT", data.substr(0, cut)) + Chunk("IDAT", data.substr(cut))));
    }
}

TEST(FastPNG, RefusesWhatBreaksOffOrIsDamagedAnywhere)
{
    const Form form = kForms[2];
    const std::string file = std::string(kPNGSignature) + HeaderChunk(9, 5, 8, 2) + Chunk("tEXt", "a") +
                             Chunk("IDAT", Compressed(RandomRows(form, 9, 5, 1))) + Chunk("tIME", "b") +
                             Chunk("IEND");
    ExpectBothTake(file);
    for (std::size_t at = 0; at < file.size(); ++at) {
        EXPECT_FALSE(DecodeFast(file.substr(0, at)).isTaken) << "cut at " << at;
        for (int bit = 0; bit < 8; ++bit) {
            std::string damaged = file;
            damaged[at] = static_cast<char>(damaged[at] ^ 1 << bit);
            EXPECT_FALSE(DecodeFast(damaged).isTaken) << "bit " << bit << " of byte " << at;
        }
    }
}

TEST(FastPNG, TakesNoStreamThatLibpngDoesNotTake)
{
    // The sums of the chunks are right, so that the damage reaches the decompression.
    const Form form = kForms[2];
    const std::string rows = RepetitiveRows(12, 1 + 30 * 3);
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY}) {
        for (const int level : {0, 6}) {
            const std::string data = CompressedWith(rows, level, strategy);
            for (std::size_t at = 0; at < data.size(); ++at) {
                std::string damaged = data;
                damaged[at] = static_cast<char>(damaged[at] ^ 1 << (at % 8));
                for (const std::string& each : {damaged, data.substr(0, at)}) {
                    const std::string file = FileOf(form, 30, 12, Chunk("IDAT", each));
                    EXPECT_LE(DecodeFast(file).isTaken, DecodeWithLibpng(file).isTaken)
                        << "at " << at << " of " << data.size() << ", level " << level;
                }
            }
        }
    }
}

TEST(FastPNG, LeavesToLibpngWhatIsUnusual)
{
    const std::string rows("\0\1\2\0\3\4", 6);
    const std::string data = Compressed(rows);
    const std::string header = HeaderChunk(2, 2, 8, 0);
    const auto idat = [](std::string_view inData) { return Chunk("IDAT", inData); };
    std::string badSum = Chunk("tEXt", "a");
    badSum.back() = static_cast<char>(badSum.back() ^ 1);
    const struct {
        const char* name;
        std::string chunks;
        bool libpngTakesIt;
    } kCases[] = {
        {"a transparent colour", header + Chunk("tRNS", std::string_view("\0\1", 2)) + idat(data), true},
        {"a palette that is not needed",
         HeaderChunk(1, 1, 8, 2) + Chunk("PLTE", "RGB") + idat(Compressed(std::string_view("\0RGB", 4))),
         true},
        {"interlaced", HeaderChunk(1, 1, 8, 0, 1) + idat(Compressed(std::string_view("\0\1", 2))), true},
        {"a chunk of data behind the end of the data", header + idat(data) + idat("more"), true},
        {"bytes behind the end of the data", header + idat(data + "more"), false},
        {"a row too many", header + idat(Compressed(rows + std::string("\0\5\6", 3))), false},
        {"a byte too many", header + idat(Compressed(rows + "\1")), false},
        {"a row too few", header + idat(Compressed(rows.substr(0, 3))), false},
        {"unknown filter", header + idat(Compressed(std::string_view("\0\1\2\5\3\4", 6))), false},
        {"wrong sum of a text behind the data", header + idat(data) + badSum, false},
        {"data apart", header + idat(data.substr(0, 4)) + Chunk("tEXt", "a") + idat(data.substr(4)), false},
        {"a header of another kind later", header + idat(data) + HeaderChunk(2, 2, 8, 0), false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const std::string file = std::string(kPNGSignature) + test.chunks + Chunk("IEND");
        EXPECT_FALSE(DecodeFast(file).isTaken);
        EXPECT_EQ(DecodeWithLibpng(file).isTaken, test.libpngTakesIt);
    }
    const std::string longEnd = std::string(kPNGSignature) + header + idat(data) + Chunk("IEND", "x");
    EXPECT_FALSE(DecodeFast(longEnd).isTaken);
    EXPECT_FALSE(DecodeWithLibpng(longEnd).isTaken);
}

/// Holds something else from the second time on that it is read from the start of its data.
class ChangingBytes final : public VF::IByteSource {
public:
    ChangingBytes(std::string inBefore, std::string inAfter)
        : mBefore(std::move(inBefore)), mAfter(std::move(inAfter))
    {}
    std::uint64_t Size() const override { return mBefore.size(); }
    std::size_t ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize) override
    {
        // The walk over the chunks reads few bytes at once; decoders read blocks.
        const std::string& now = inSize > 4096 || mHasChanged ? mAfter : mBefore;
        mHasChanged = &now == &mAfter;
        return inOffset >= now.size() ? 0 : now.copy(static_cast<char*>(outBytes), inSize, inOffset);
    }

private:
    const std::string mBefore;
    const std::string mAfter;
    bool mHasChanged = false;
};

TEST(FastPNG, RefusesAFileThatChangesMeanwhile)
{
    const Form form = kForms[2];
    const auto fileOf = [&](std::uint32_t inWidth, std::uint32_t inHeight) {
        // Not compressed, so that it takes several blocks.
        return FileOf(form, inWidth, inHeight,
                      Chunk("IDAT", CompressedWith(RandomRows(form, inWidth, inHeight, 0), 0, 0)));
    };
    const std::string file = fileOf(300, 300);
    const struct {
        const char* name;
        std::string after;
        bool isTaken;
    } kCases[] = {
        {"stays", file, true},
        {"became wider", fileOf(301, 300), false},
        {"became lower", fileOf(300, 299), false},
        {"shrank to nothing", "", false},
        {"shrank to its header", file.substr(0, 33), false},
        {"shrank within its first block", file.substr(0, 5000), false},
        {"shrank within its second block", file.substr(0, 200000), false},
        {"lost its last byte", file.substr(0, file.size() - 1), false},
        {"became something else", std::string(file.size(), 'x'), false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        ChangingBytes bytes(file, test.after);
        EXPECT_EQ(DecodeFast(bytes).isTaken, test.isTaken);
    }
}

} // namespace
