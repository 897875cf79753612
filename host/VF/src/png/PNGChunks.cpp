#include "PNGChunks.h"

#include <isa-l.h>

#include <algorithm>
#include <cstring>

namespace VF {
namespace {

constexpr std::size_t kMostKeyword = 79;
constexpr std::size_t kMostChunk = 0x7FFFFFFF;

std::string BigEndian(std::uint32_t inValue)
{
    return {static_cast<char>(inValue >> 24), static_cast<char>(inValue >> 16),
            static_cast<char>(inValue >> 8), static_cast<char>(inValue)};
}

bool IsKeyword(std::string_view inKeyword)
{
    const auto isPrintable = [](char inLetter) {
        const auto code = static_cast<unsigned char>(inLetter);
        return (code >= 32 && code <= 126) || code >= 161;
    };
    return !inKeyword.empty() && inKeyword.size() <= kMostKeyword && inKeyword.front() != ' ' &&
           inKeyword.back() != ' ' && inKeyword.find("  ") == std::string_view::npos &&
           std::all_of(inKeyword.begin(), inKeyword.end(), isPrintable);
}

} // namespace

std::string PNGTextData(const std::pair<std::string, std::string>& inText)
{
    const auto& [keyword, text] = inText;
    if (!IsKeyword(keyword) || text.find('\0') != std::string::npos ||
        text.size() > kMostChunk - keyword.size() - 1) {
        return {};
    }
    return keyword + '\0' + text;
}

void PNGChunks::Begin(const PNGSource& inSource)
{
    mBytes.Append("\x89PNG\r\n\x1A\n", 8);
    constexpr char kRGB = 2;
    AddChunk("IHDR", BigEndian(inSource.width) + BigEndian(inSource.height) +
                         std::string{static_cast<char>(inSource.Is16() ? 16 : 8), kRGB, 0, 0, 0});
    if (inSource.pixelsPerUnitX != 0) {
        AddChunk("pHYs", BigEndian(inSource.pixelsPerUnitX) + BigEndian(inSource.pixelsPerUnitY) + '\0');
    }
    for (const auto& text : inSource.texts) {
        if (const std::string data = PNGTextData(text); !data.empty()) {
            AddChunk("tEXt", data);
        }
    }
}

void PNGChunks::BeginChunk(std::string_view inType)
{
    mChunk = mBytes.Size();
    mBytes.Append(BigEndian(0).data(), 4);
    mBytes.Append(inType.data(), inType.size());
}

void PNGChunks::EndChunk()
{
    const std::size_t size = mBytes.Size() - mChunk - 8;
    std::memcpy(mBytes.At(mChunk), BigEndian(static_cast<std::uint32_t>(size)).data(), 4);
    const std::uint32_t sum =
        crc32_gzip_refl(0, reinterpret_cast<const unsigned char*>(mBytes.At(mChunk + 4)), size + 4);
    mBytes.Append(BigEndian(sum).data(), 4);
}

void PNGChunks::End()
{
    AddChunk("IEND", {});
}

void PNGChunks::AddChunk(std::string_view inType, std::string_view inData)
{
    BeginChunk(inType);
    mBytes.Append(inData.data(), inData.size());
    EndChunk();
}

} // namespace VF
