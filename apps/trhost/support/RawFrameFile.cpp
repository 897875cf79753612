#include "RawFrameFile.h"

#include <VF/VideoFrames.h>
#include <kiocore/filesupport/PlatformByteStream.h>
#include <kiomediatypes/PixelFormat.h>

#include <array>
#include <cstdio>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::filesupport::IPlatformByteStream;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

std::uint32_t Little(const std::uint8_t* inBytes)
{
    return inBytes[0] | std::uint32_t(inBytes[1]) << 8 | std::uint32_t(inBytes[2]) << 16 |
           std::uint32_t(inBytes[3]) << 24;
}

void AppendLittle(std::string& ioBytes, std::uint32_t inNumber)
{
    for (int shift = 0; shift < 32; shift += 8) {
        ioBytes += char(inNumber >> shift);
    }
}

RawFrameHeader ParseHeader(const std::array<std::uint8_t, kRawFrameHeaderBytes>& inBytes)
{
    const auto field = [&](std::size_t inIndex) { return Little(inBytes.data() + inIndex * 4); };
    return {field(0), field(1), field(2), field(3), field(4), field(5), field(6), field(7)};
}

UTF16String HexText(std::uint32_t inNumber)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", unsigned(inNumber));
    return ToUTF16(text);
}

/// What its magic, version, format and size say against it; empty when nothing does.
UTF16String FaultOfForm(const RawFrameHeader& inHeader)
{
    if (inHeader.magic != kRawFrameMagic) {
        return Text("$$$/Halcyon/TrHost/RawMagic=the magic number is @0, expected @1",
                    {HexText(inHeader.magic), HexText(kRawFrameMagic)});
    }
    if (inHeader.version != kRawFrameVersion) {
        return Text("$$$/Halcyon/TrHost/RawVersion=the version is @0, expected @1",
                    {HexText(inHeader.version), HexText(kRawFrameVersion)});
    }
    const PixelFormat format = inHeader.GetPixelFormat();
    if (format == kPixelFormat_Any || format & kPixelFormatFlag_Planar) {
        std::string codes;
        for (const NamedPixelFormat& known : kPixelFormats) {
            if (!(known.format & kPixelFormatFlag_Planar)) {
                RawFrameHeader header;
                header.format = std::uint32_t(known.format);
                codes += (codes.empty() ? "" : ", ") + header.FormatCode();
            }
        }
        return Text("$$$/Halcyon/TrHost/RawFormat=the pixel format is \"@0\", expected one of @1",
                    {ToUTF16(inHeader.FormatCode()), ToUTF16(codes)});
    }
    if (inHeader.width == 0 || inHeader.height == 0 || inHeader.width > VF::kMostPixelsPerSide ||
        inHeader.height > VF::kMostPixelsPerSide) {
        return Text(
            "$$$/Halcyon/TrHost/RawSize=the picture is @0 x @1 pixels, expected 1 to @2 a side",
            {DecimalText(inHeader.width), DecimalText(inHeader.height), DecimalText(VF::kMostPixelsPerSide)});
    }
    return {};
}

/// What the file's size says against it.
UTF16String FaultOfExtent(const RawFrameHeader& inHeader, std::uint64_t inFileBytes)
{
    const std::uint64_t needed =
        VF::LayoutOf(inHeader.GetPixelFormat(), inHeader.width, inHeader.height, true).planes[0].usedBytes;
    if (inHeader.rowBytes < needed) {
        return Text("$$$/Halcyon/TrHost/RawRowBytes=a row has @0 bytes, expected at least @1",
                    {DecimalText(inHeader.rowBytes), DecimalText(needed)});
    }
    if (inFileBytes != inHeader.ExpectedFileBytes()) {
        return Text("$$$/Halcyon/TrHost/RawFileSize=the file has @0 bytes, expected @1",
                    {DecimalText(inFileBytes), DecimalText(inHeader.ExpectedFileBytes())});
    }
    return {};
}

RawFrameInfo ReadInfo(IPlatformByteStream& ioStream)
{
    RawFrameInfo info;
    std::array<std::uint8_t, kRawFrameHeaderBytes> bytes{};
    info.fileBytes = ioStream.Size();
    info.hasHeader = ioStream.ReadBlock(bytes.data(), bytes.size()) == bytes.size();
    if (!info.hasHeader) {
        info.reason = Text("$$$/Halcyon/TrHost/RawHeader=the file has @0 bytes, expected a header of @1",
                           {DecimalText(info.fileBytes), DecimalText(kRawFrameHeaderBytes)});
        return info;
    }
    info.header = ParseHeader(bytes);
    info.reason = FaultOfForm(info.header);
    if (info.IsValid()) {
        info.reason = FaultOfExtent(info.header, info.fileBytes);
    }
    return info;
}

/// @return false when the file ended early: somebody cut it just now.
bool ReadRows(IPlatformByteStream& ioStream, const RawFrameHeader& inHeader,
              const MF::IVideoFrameRef& inFrame)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    const auto usedBytes = std::size_t(
        VF::LayoutOf(inHeader.GetPixelFormat(), inHeader.width, inHeader.height, true).planes[0].usedBytes);
    std::uint64_t position = kRawFrameHeaderBytes;
    for (std::size_t row = inHeader.height; row-- > 0; position += inHeader.rowBytes) {
        if (inHeader.rowBytes != usedBytes) {
            ioStream.SetPosition(position);
        }
        std::byte* const pixels = memory->GetWritablePixels() + row * memory->GetRowBytes();
        if (ioStream.ReadBlock(pixels, usedBytes) != usedBytes) {
            return false;
        }
    }
    return true;
}

PixelAspectRatio ShapeOf(const RawFrameHeader& inHeader)
{
    // Writers that do not know the shape of their pixels leave it 0.
    if (inHeader.aspectNumerator == 0 || inHeader.aspectDenominator == 0) {
        return kPixelAspectRatio_Square;
    }
    return {inHeader.aspectNumerator, inHeader.aspectDenominator};
}

} // namespace

PixelFormat RawFrameHeader::GetPixelFormat() const
{
    for (const NamedPixelFormat& known : kPixelFormats) {
        if (std::uint32_t(known.format) == format) {
            return known.format;
        }
    }
    return kPixelFormat_Any;
}

std::string RawFrameHeader::FormatCode() const
{
    std::string code;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t letter = format >> shift & 0xFF;
        if (letter >= 0x20 && letter < 0x7F) {
            code += char(letter);
        } else {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\x%02x", unsigned(letter));
            code += escape;
        }
    }
    return code;
}

bool IsRawFrameMagic(std::string_view inFirstBytes)
{
    return inFirstBytes.starts_with("WRFV");
}

RawFrameInfo ReadRawFrameInfo(const UTF16String& inPath)
{
    IPlatformByteStream stream(inPath);
    return ReadInfo(stream);
}

MF::IVideoFrameRef ReadRawFrame(const UTF16String& inPath, UTF16String& outReason)
{
    IPlatformByteStream stream(inPath);
    const RawFrameInfo info = ReadInfo(stream);
    if (!info.IsValid()) {
        outReason = info.reason;
        return {};
    }
    const RawFrameHeader& header = info.header;
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, header.GetPixelFormat(), header.width, header.height, ShapeOf(header),
                              false, false) ||
        !frame->InitializePixels(0)) {
        outReason = Text("$$$/Halcyon/TrHost/RawNoMemory=there is no memory for @0 x @1 pixels",
                         {DecimalText(header.width), DecimalText(header.height)});
        return {};
    }
    if (!ReadRows(stream, header, frame)) {
        outReason = Text("$$$/Halcyon/TrHost/RawFileSize=the file has @0 bytes, expected @1",
                         {DecimalText(stream.Size()), DecimalText(header.ExpectedFileBytes())});
        return {};
    }
    return frame;
}

std::string RawFrameBytes(const MF::IVideoFrameRef& inFrame)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    const VF::FrameLayout layout =
        VF::LayoutOf(inFrame->GetPixelFormat(), inFrame->GetWidth(), inFrame->GetHeight(), true);
    const auto rowBytes = std::size_t(layout.planes[0].rowBytes);
    const PixelAspectRatio shape = inFrame->GetPixelAspectRatio();
    std::string bytes;
    bytes.reserve(std::size_t(kRawFrameHeaderBytes + layout.sizeBytes));
    for (const std::uint32_t field :
         {kRawFrameMagic, kRawFrameVersion, std::uint32_t(inFrame->GetPixelFormat()), inFrame->GetWidth(),
          inFrame->GetHeight(), std::uint32_t(rowBytes), shape.numerator, shape.denominator}) {
        AppendLittle(bytes, field);
    }
    for (std::size_t row = inFrame->GetHeight(); row-- > 0;) {
        const std::byte* const pixels = memory->GetPixels() + row * memory->GetRowBytes();
        bytes.append(reinterpret_cast<const char*>(pixels), rowBytes);
    }
    return bytes;
}

} // namespace trhost
