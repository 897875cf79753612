#include <png/Inflater.h>

#include <gtest/gtest.h>

#include <zlib.h>

#include <memory>
#include <string>
#include <vector>

namespace {

/// Writes a "zlib" stream bit by bit, also such as no compressor writes.
class Bits {
public:
    Bits() { Put(0x78, 8).Put(0x01, 8); }
    Bits& Put(std::uint32_t inValue, int inCount)
    {
        for (int bit = 0; bit < inCount; ++bit, ++mCount) {
            if (mCount % 8 == 0) {
                mBytes += '\0';
            }
            mBytes.back() = static_cast<char>(mBytes.back() | (inValue >> bit & 1) << mCount % 8);
        }
        return *this;
    }
    /// A code, whose first bit is written first.
    Bits& Code(std::string_view inBits)
    {
        for (const char bit : inBits) {
            Put(bit == '1', 1);
        }
        return *this;
    }
    /// The start of a last block whose codes' lengths are 0, 1 and 2, given as runs: {length, count}.
    Bits& Codes(int inLiterals, int inDistances, const std::vector<std::pair<int, int>>& inRuns)
    {
        Put(1, 1).Put(2, 2);
        Put(static_cast<std::uint32_t>(inLiterals - 257), 5);
        Put(static_cast<std::uint32_t>(inDistances - 1), 5);
        // Lengths 1, 2, 0 (two bits each) and many 0 (two bits): 16 17 18 0 8 7 9 6 10 5 11 4 12 3 13 2 14 1
        Put(14, 4);
        for (const int bits : {0, 0, 2, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2}) {
            Put(static_cast<std::uint32_t>(bits), 3);
        }
        for (auto [length, count] : inRuns) {
            while (count > 0) {
                if (length == 0 && count >= 11) {
                    const int zeros = std::min(count, 138);
                    Code("11").Put(static_cast<std::uint32_t>(zeros - 11), 7);
                    count -= zeros;
                } else {
                    Code(length == 0 ? "00" : length == 1 ? "01" : "10");
                    --count;
                }
            }
        }
        return *this;
    }
    std::string With(std::string_view inOutput) const
    {
        std::string bytes = mBytes;
        const uLong sum =
            adler32(1, reinterpret_cast<const Bytef*>(inOutput.data()), static_cast<uInt>(inOutput.size()));
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes += static_cast<char>(sum >> shift);
        }
        return bytes;
    }

private:
    std::string mBytes;
    int mCount = 0;
};

std::string ZlibResult(const std::string& inStream)
{
    z_stream stream{};
    inflateInit(&stream);
    std::string output(1000, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(inStream.data()));
    stream.avail_in = static_cast<uInt>(inStream.size());
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    const int result = inflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    inflateEnd(&stream);
    return result == Z_STREAM_END ? output : "refused";
}

std::string OurResult(const std::string& inStream)
{
    const auto inflater = std::make_unique<VF::Inflater>();
    std::vector<std::uint8_t> input(inStream.begin(), inStream.end());
    input.resize(input.size() + VF::InflateBuffers::kInputPadding);
    std::vector<std::uint8_t> output(1000 + VF::InflateBuffers::kOutputPadding);
    VF::InflateBuffers buffers;
    buffers.input = input.data();
    buffers.inputEnd = input.data() + inStream.size();
    buffers.inputIsAll = true;
    buffers.outputBegin = buffers.output = output.data();
    buffers.outputEnd = output.data() + 1000;
    if (inflater->Run(buffers) != VF::Inflater::Status::kDone) {
        return "refused";
    }
    const std::string result(output.data(), buffers.output);
    const uLong sum =
        adler32(1, reinterpret_cast<const Bytef*>(result.data()), static_cast<uInt>(result.size()));
    return sum == inflater->WantedAdler() ? result : "refused";
}

TEST(Inflater, IsAsStrictAsZlib)
{
    const std::pair<int, int> upToA{0, 'a'}; // symbols before 'a' have no code
    const struct {
        const char* name;
        std::string stream;
        std::string expected;
    } kCases[] = {
        {"a and the end have one bit each",
         Bits().Codes(257, 1, {upToA, {1, 1}, {0, 158}, {1, 1}, {0, 1}}).Code("0001").With("aaa"), "aaa"},
        {"a and the end have two bits each: codes are left over",
         Bits().Codes(257, 1, {upToA, {2, 1}, {0, 158}, {2, 1}, {0, 1}}).Code("00").Code("01").With("a"),
         "refused"},
        {"three codes of one bit",
         Bits().Codes(257, 1, {upToA, {1, 2}, {0, 157}, {1, 1}, {0, 1}}).Code("01").With("a"), "refused"},
        {"the end alone has one bit", Bits().Codes(257, 1, {{0, 256}, {1, 1}, {0, 1}}).Code("0").With(""),
         ""},
        {"the end alone has one bit, the other is used",
         Bits().Codes(257, 1, {{0, 256}, {1, 1}, {0, 1}}).Code("10").With(""), "refused"},
        {"the end has no code", Bits().Codes(257, 1, {upToA, {1, 2}, {0, 158}, {0, 1}}).Code("01").With("ab"),
         "refused"},
        {"the only distance has one bit",
         Bits().Codes(258, 1, {upToA, {1, 1}, {0, 158}, {2, 2}, {1, 1}}).Code("0110").Code("10").With("aaaa"),
         "aaaa"},
        {"the other bit is no distance",
         Bits().Codes(258, 1, {upToA, {1, 1}, {0, 158}, {2, 2}, {1, 1}}).Code("0111").Code("10").With("aaaa"),
         "refused"},
        {"the only distance has two bits",
         Bits()
             .Codes(258, 1, {upToA, {1, 1}, {0, 158}, {2, 2}, {2, 1}})
             .Code("01100")
             .Code("10")
             .With("aaaa"),
         "refused"},
        {"a length, but no distances",
         Bits().Codes(258, 1, {upToA, {1, 1}, {0, 158}, {2, 2}, {0, 1}}).Code("0110").Code("10").With("aaaa"),
         "refused"},
        {"further back than there is anything",
         Bits()
             .Codes(258, 2, {upToA, {1, 1}, {0, 158}, {2, 2}, {0, 1}, {1, 1}})
             .Code("0110")
             .Code("10")
             .With("aaaa"),
         "refused"},
        {"287 literals and lengths", Bits().Codes(287, 1, {{0, 256}, {1, 1}, {0, 31}}).Code("0").With(""),
         "refused"},
        {"31 distances", Bits().Codes(257, 31, {{0, 256}, {1, 1}, {0, 31}}).Code("0").With(""), "refused"},
        {"zeros beyond the last distance",
         Bits().Codes(257, 1, {{0, 256}, {1, 1}, {0, 12}}).Code("0").With(""), "refused"},
        {"a fixed length without meaning", Bits().Put(1, 1).Put(1, 2).Code("11000110").With(""), "refused"},
        {"a fixed distance without meaning",
         Bits()
             .Put(1, 1)
             .Put(1, 2)
             .Code("10010001")
             .Code("0000001")
             .Code("11110")
             .Code("0000000")
             .With("aaaa"),
         "refused"},
        {"fixed codes, a repetition",
         Bits()
             .Put(1, 1)
             .Put(1, 2)
             .Code("10010001")
             .Code("0000001")
             .Code("00000")
             .Code("0000000")
             .With("aaaa"),
         "aaaa"},
        {"an unknown kind of block", Bits().Put(1, 1).Put(3, 2).With(""), "refused"},
        {"stored, lengths that disagree",
         Bits().Put(1, 1).Put(0, 2).Put(0, 5).Put(1, 16).Put(0xFFFF, 16).Put('a', 8).With("a"), "refused"},
        {"stored, twice nothing, then a",
         Bits()
             .Put(0, 8)
             .Put(0, 16)
             .Put(0xFFFF, 16)
             .Put(0, 8)
             .Put(0, 16)
             .Put(0xFFFF, 16)
             .Put(1, 8)
             .Put(1, 16)
             .Put(0xFFFE, 16)
             .Put('a', 8)
             .With("a"),
         "a"},
        {"a wrong sum", Bits().Put(1, 1).Put(1, 2).Code("0000000").With("a"), "refused"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(ZlibResult(test.stream), test.expected) << "as zlib sees it";
        EXPECT_EQ(OurResult(test.stream), test.expected);
    }
}

TEST(Inflater, KnowsTheHeadersThatZlibKnows)
{
    const std::string rest = Bits().Put(1, 1).Put(1, 2).Code("0000000").With("").substr(2);
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string stream{static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(OurResult(stream + rest), ZlibResult(stream + rest)) << first << ", " << second;
        }
    }
}

} // namespace
