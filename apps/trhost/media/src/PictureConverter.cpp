#include "PictureConverter.h"

#include "../../support/KeptText.h"
#include "../MediaModule.h"
#include "BGRA16Conversion.h"
#include "PackedRows.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <array>
#include <cstring>
#include <utility>

namespace trhost::media {
namespace {

using namespace kiomediatypes;

constexpr std::uint8_t kNeutralChroma = 128;

const char* NameOfFormat(const AVFrame& inPicture)
{
    const char* const name = av_get_pix_fmt_name(AVPixelFormat(inPicture.format));
    return name ? name : "unknown";
}

bool Is420(const AVFrame& inPicture)
{
    switch (inPicture.format) {
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_NV12:
    case AV_PIX_FMT_NV21:
    case AV_PIX_FMT_GRAY8: // luma alone: neutral chroma keeps all of it
        return true;
    default:
        return false;
    }
}

bool Is422(const AVFrame& inPicture)
{
    switch (inPicture.format) {
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_UYVY422:
    case AV_PIX_FMT_YUYV422:
        return true;
    default:
        return false;
    }
}

int PixelBytes(PixelFormat inFormat)
{
    return inFormat == kPixelFormat_BGRA_4444_32f ? 16 : inFormat == kPixelFormat_BGRA_4444_16u ? 8 : 4;
}

ConstPlane PlaneOf(const AVFrame& inPicture, int inPlane, int inWidth, int inHeight)
{
    return {inPicture.data[inPlane], inPicture.linesize[inPlane], inWidth, inHeight};
}

const std::uint8_t* RowOf(const ConstPlane& inPlane, int inRow)
{
    return inPlane.pixels + inRow * inPlane.rowBytes;
}

const std::uint16_t* WordsOf(const std::uint8_t* inRow)
{
    return reinterpret_cast<const std::uint16_t*>(inRow);
}

/// Chroma that MoveChroma reads; of other formats only the converter that goes by RGB moves it.
bool IsMovable(const AVFrame& inPicture)
{
    return inPicture.format != AV_PIX_FMT_UYVY422 && inPicture.format != AV_PIX_FMT_YUYV422 &&
           inPicture.format != AV_PIX_FMT_YUV422P10;
}

/// One of two interleaved planes.
ChromaPlane Separated(const ConstPlane& inPairs, int inByte)
{
    ChromaPlane plane = MakeChromaPlane(inPairs.width, inPairs.height);
    for (int y = 0; y < inPairs.height; ++y) {
        const std::uint8_t* const from = inPairs.pixels + y * inPairs.rowBytes + inByte;
        std::uint8_t* const to = plane.samples.data() + std::ptrdiff_t(y) * plane.width;
        for (int x = 0; x < plane.width; ++x) {
            to[x] = from[2 * x];
        }
    }
    return plane;
}

} // namespace

PictureConverter::PictureConverter(std::string inName, const AVStream& inStream) : mName(std::move(inName))
{
    bool isExact = true;
    mOrientation = OrientationOf(inStream, isExact);
    if (!isExact) {
        kiocore::debug::Trace(
            3, "Media", mName + ": is to be shown at an angle that is no quarter turn; it is left as it is");
    }
}

PixelFormat PictureConverter::FormatFor(const AVFrame& inPicture) const
{
    // Of these only the chroma would have to be made anew; that is done better from RGB.
    const bool isUpright = !mOrientation;
    if (Is420(inPicture)) {
        return kPixelFormat_YUV_420_8u_Planar;
    }
    if (isUpright && Is422(inPicture)) {
        return kPixelFormat_UYVY_422_8u;
    }
    if (isUpright && inPicture.format == AV_PIX_FMT_YUV422P10) {
        return kPixelFormat_V210_422_10u;
    }
    if (IsRGB8(inPicture.format)) {
        return kPixelFormat_BGRA_4444_8u;
    }
    if (inPicture.format == AV_PIX_FMT_GBRPF32 || inPicture.format == AV_PIX_FMT_GBRAPF32) {
        return kPixelFormat_BGRA_4444_32f;
    }
    if (!IsConvertibleToBGRA16(inPicture.format)) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/PixelsNotConverted=@0: its pixels are \"@1\", which cannot be "
                     "converted#{@0: a file and stream, @1: a pixel format}",
                     {mName, NameOfFormat(inPicture)}),
            kMediaError_NothingDecoded);
    }
    return kPixelFormat_BGRA_4444_16u;
}

PictureConverter::Target PictureConverter::Create(const AVFrame& inPicture, AVRational inPixelShape,
                                                  PixelFormat inFormat, bool inIsUpright) const
{
    auto width = std::uint32_t(inPicture.width);
    auto height = std::uint32_t(inPicture.height);
    PixelAspectRatio shape = kPixelAspectRatio_Square;
    if (inPixelShape.num > 0 && inPixelShape.den > 0) {
        shape = {std::uint32_t(inPixelShape.num), std::uint32_t(inPixelShape.den)};
    }
    if (inIsUpright && mOrientation.isTransposed) {
        std::swap(width, height);
        std::swap(shape.numerator, shape.denominator);
    }
    Target target;
    if (!VF::CreateVideoFrame(target.frame, inFormat, width, height, shape, mColorSpace, false, false)) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/PictureTooLarge=@0: a picture of @1 pixels; expected at most "
                     "@2 each way, and no more than fit into memory#{@0: a file and stream, @1: 640 x 480}",
                     {mName, std::to_string(width) + " x " + std::to_string(height),
                      std::to_string(VF::kMostPixelsPerSide)}),
            kMediaError_NothingDecoded);
    }
    if (!target.frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(target.frame);
    for (int i = 0; i < memory->GetPlaneCount(); ++i) {
        target.planes[i] = {reinterpret_cast<std::uint8_t*>(memory->GetWritablePixels(i)),
                            std::ptrdiff_t(memory->GetRowBytes(i))};
    }
    return target;
}

/// Says once for each form what cannot be kept as it is.
void PictureConverter::NoteForm(const AVFrame& inPicture)
{
    const Form form{inPicture.format,     inPicture.width,       inPicture.height,
                    inPicture.colorspace, inPicture.color_range, inPicture.chroma_location};
    std::string note;
    mColorSpace = ColorSpaceOf(inPicture, note);
    if (form == mForm) {
        return;
    }
    mForm = form;
    const ChromaPosition position = ChromaPositionOf(inPicture);
    if (position.x != 0 || (Is420(inPicture) && position.y != 1)) {
        note += std::string(note.empty() ? "" : ", ") + "chroma at " +
                av_chroma_location_name(inPicture.chroma_location) +
                (IsMovable(inPicture) ? " moved to where ours is" : " taken for left");
    }
    if (!note.empty()) {
        kiocore::debug::Trace(5, "Media", mName + ": " + NameOfFormat(inPicture) + ": " + note);
    }
}

MF::IVideoFrameRef PictureConverter::Convert(const AVFrame& inPicture, AVRational inPixelShape)
{
    NoteForm(inPicture);
    const PixelFormat format = FormatFor(inPicture);
    const bool isYUV = IsYUV(format);
    Target target = Create(inPicture, inPixelShape, format, isYUV);
    if (format == kPixelFormat_YUV_420_8u_Planar) {
        CopyPlanar420(inPicture, target);
        return target.frame;
    }
    if (isYUV) {
        Copy422(inPicture, target.planes[0]);
        return target.frame;
    }
    if (IsRGB8(inPicture.format) || format == kPixelFormat_BGRA_4444_32f) {
        for (int y = 0; y < inPicture.height; ++y) {
            std::uint8_t* const row = target.planes[0].pixels + y * target.planes[0].rowBytes;
            if (format == kPixelFormat_BGRA_4444_32f) {
                PackFloatRow(inPicture, y, reinterpret_cast<float*>(row));
            } else {
                PackBGRARow(inPicture, y, row);
            }
        }
    } else {
        ConvertToBGRA16(inPicture, mColorSpace.matrix, mColorSpace.range, target.planes[0]);
    }
    if (!mOrientation) {
        return target.frame;
    }
    const Target upright = Create(inPicture, inPixelShape, format, true);
    CopyUpright({target.planes[0].pixels, target.planes[0].rowBytes, inPicture.width, inPicture.height},
                PixelBytes(format), mOrientation, upright.planes[0]);
    return upright.frame;
}

void PictureConverter::CopyPlanar420(const AVFrame& inPicture, const Target& inTarget) const
{
    CopyUpright(PlaneOf(inPicture, 0, inPicture.width, inPicture.height), 1, mOrientation,
                inTarget.planes[0]);
    const int width = (inPicture.width + 1) / 2;
    const int height = (inPicture.height + 1) / 2;
    switch (inPicture.format) {
    case AV_PIX_FMT_GRAY8:
        for (int plane = 1; plane <= 2; ++plane) {
            const auto rows = mOrientation.isTransposed ? width : height;
            const auto samples = std::size_t(mOrientation.isTransposed ? height : width);
            for (int y = 0; y < rows; ++y) {
                std::memset(inTarget.planes[plane].pixels + y * inTarget.planes[plane].rowBytes,
                            kNeutralChroma, samples);
            }
        }
        break;
    case AV_PIX_FMT_NV12:
    case AV_PIX_FMT_NV21: {
        const ConstPlane pairs = PlaneOf(inPicture, 1, width, height);
        const int blue = inPicture.format == AV_PIX_FMT_NV12 ? 0 : 1;
        CopyChroma420(inPicture, Separated(pairs, blue).View(), inTarget.planes[1]);
        CopyChroma420(inPicture, Separated(pairs, 1 - blue).View(), inTarget.planes[2]);
        break;
    }
    default:
        CopyChroma420(inPicture, PlaneOf(inPicture, 1, width, height), inTarget.planes[1]);
        CopyChroma420(inPicture, PlaneOf(inPicture, 2, width, height), inTarget.planes[2]);
        break;
    }
}

void PictureConverter::CopyChroma420(const AVFrame& inPicture, const ConstPlane& inChroma,
                                     Plane outSamples) const
{
    const ChromaPosition position = ChromaPositionOf(inPicture);
    if (!mOrientation) {
        return MoveChroma(inChroma, position, true, outSamples);
    }
    ChromaPlane turned = mOrientation.isTransposed ? MakeChromaPlane(inChroma.height, inChroma.width)
                                                   : MakeChromaPlane(inChroma.width, inChroma.height);
    CopyUpright(inChroma, 1, mOrientation, {turned.samples.data(), turned.width});
    MoveChroma(turned.View(), Upright(position, inPicture.width, inPicture.height, mOrientation), true,
               outSamples);
}

void PictureConverter::Copy422(const AVFrame& inPicture, Plane outPixels) const
{
    const int width = inPicture.width;
    const int chromaWidth = (width + 1) / 2;
    const ChromaPosition position = ChromaPositionOf(inPicture);
    std::array<ChromaPlane, 2> moved;
    std::array<ConstPlane, 2> chroma{PlaneOf(inPicture, 1, chromaWidth, inPicture.height),
                                     PlaneOf(inPicture, 2, chromaWidth, inPicture.height)};
    for (std::size_t i = 0; IsMovable(inPicture) && position.x != 0 && i < moved.size(); ++i) {
        moved[i] = MakeChromaPlane(chromaWidth, inPicture.height);
        MoveChroma(chroma[i], position, false, {moved[i].samples.data(), chromaWidth});
        chroma[i] = moved[i].View();
    }
    for (int y = 0; y < inPicture.height; ++y) {
        const std::uint8_t* const luma = inPicture.data[0] + std::ptrdiff_t(y) * inPicture.linesize[0];
        std::uint8_t* const row = outPixels.pixels + y * outPixels.rowBytes;
        switch (inPicture.format) {
        case AV_PIX_FMT_UYVY422:
            std::memcpy(row, luma, std::size_t(chromaWidth) * 4);
            if (width % 2 != 0) {
                row[chromaWidth * 4 - 1] = row[chromaWidth * 4 - 3];
            }
            break;
        case AV_PIX_FMT_YUYV422:
            SwapYUYVRow(luma, width, row);
            break;
        case AV_PIX_FMT_YUV422P10:
            PackV210Row(WordsOf(luma), WordsOf(RowOf(chroma[0], y)), WordsOf(RowOf(chroma[1], y)), width,
                        row);
            break;
        default:
            PackUYVYRow(luma, RowOf(chroma[0], y), RowOf(chroma[1], y), width, row);
            break;
        }
    }
}

} // namespace trhost::media
