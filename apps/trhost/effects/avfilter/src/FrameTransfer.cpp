#include "FrameTransfer.h"

#include "../../PluginMemory.h"
#include "ComponentRows.h"

#include <VF/VideoFrames.h>

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/imgutils.h>
#include <libavutil/macros.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

namespace trhost::effects::avfilter {
namespace {

using namespace kiomediatypes;

/// Rows of every picture start on the largest vector that filters use, and have place for as many pixels as a
/// multiple of that. Pictures that libavfilter makes itself are no wider, and there are filters that copy as
/// much of a row as their own picture has, padding included.
constexpr int kRowAlignment = 64;

constexpr int kMostComponents = 4;
constexpr int kAlpha = 3;

/// Red, green, blue, alpha or Y, Cb, Cr of one picture, wherever they lie.
struct Components {
    Samples samples[kMostComponents];
    int count = 0;
    int sampleBytes = 1;
};

/// Where the components of our formats lie within their plane, in bytes.
struct OurLayout {
    PixelFormat format;
    int sampleBytes;
    int stepBytes;
    int offsets[kMostComponents];
};
constexpr OurLayout kOurRGBLayouts[] = {
    {kPixelFormat_BGRA_4444_8u, 1, 4, {2, 1, 0, 3}},
    {kPixelFormat_ARGB_4444_8u, 1, 4, {1, 2, 3, 0}},
    {kPixelFormat_BGRA_4444_16u, 2, 8, {4, 2, 0, 6}},
    {kPixelFormat_BGRA_4444_32f, 4, 16, {8, 4, 0, 12}},
};

/// The memory of a frame. Reading and writing differ only in whom it was asked from.
struct OurPlanes {
    std::uint8_t* pixels[VF::FrameLayout::kMostPlanes] = {};
    std::ptrdiff_t rowBytes[VF::FrameLayout::kMostPlanes] = {};
};

OurPlanes PlanesOf(const MF::IVideoFrameRef& inFrame, bool inToWrite)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    OurPlanes planes;
    for (int i = 0; i < memory->GetPlaneCount() && i < VF::FrameLayout::kMostPlanes; ++i) {
        std::byte* const pixels =
            inToWrite ? memory->GetWritablePixels(i) : const_cast<std::byte*>(memory->GetPixels(i));
        planes.pixels[i] = reinterpret_cast<std::uint8_t*>(pixels);
        planes.rowBytes[i] = std::ptrdiff_t(memory->GetRowBytes(i));
    }
    return planes;
}

Components OurComponents(const OurPlanes& inPlanes, PixelFormat inFormat, int inWidth, int inHeight)
{
    Components components;
    for (const OurLayout& layout : kOurRGBLayouts) {
        if (layout.format == inFormat) {
            components.count = kMostComponents;
            components.sampleBytes = layout.sampleBytes;
            for (int i = 0; i < kMostComponents; ++i) {
                components.samples[i] = {inPlanes.pixels[0] + layout.offsets[i], inPlanes.rowBytes[0],
                                         layout.stepBytes, inWidth, inHeight};
            }
            return components;
        }
    }
    components.count = 3;
    const int halfWidth = (inWidth + 1) / 2;
    if (inFormat == kPixelFormat_UYVY_422_8u) {
        std::uint8_t* const pixels = inPlanes.pixels[0];
        components.samples[0] = {pixels + 1, inPlanes.rowBytes[0], 2, inWidth, inHeight};
        components.samples[1] = {pixels, inPlanes.rowBytes[0], 4, halfWidth, inHeight};
        components.samples[2] = {pixels + 2, inPlanes.rowBytes[0], 4, halfWidth, inHeight};
    } else {
        components.samples[0] = {inPlanes.pixels[0], inPlanes.rowBytes[0], 1, inWidth, inHeight};
        for (int i = 1; i < 3; ++i) {
            components.samples[i] = {inPlanes.pixels[i], inPlanes.rowBytes[i], 1, halfWidth,
                                     (inHeight + 1) / 2};
        }
    }
    return components;
}

Components TheirComponents(const AVFrame& inPicture)
{
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(inPicture.format));
    Components components;
    components.count = format.nb_components;
    components.sampleBytes = (format.comp[0].depth + 7) / 8;
    for (int i = 0; i < format.nb_components; ++i) {
        const AVComponentDescriptor& component = format.comp[i];
        const bool isChroma = !(format.flags & AV_PIX_FMT_FLAG_RGB) && (i == 1 || i == 2);
        components.samples[i] = {
            inPicture.data[component.plane] + component.offset, inPicture.linesize[component.plane],
            component.step,
            isChroma ? AV_CEIL_RSHIFT(inPicture.width, format.log2_chroma_w) : inPicture.width,
            isChroma ? AV_CEIL_RSHIFT(inPicture.height, format.log2_chroma_h) : inPicture.height};
    }
    return components;
}

Planes422 PlanesOfRow(const AVFrame& inPicture, int inRow)
{
    const auto row = [&](int inPlane) {
        return reinterpret_cast<std::uint16_t*>(inPicture.data[inPlane] +
                                                std::ptrdiff_t(inRow) * inPicture.linesize[inPlane]);
    };
    return {row(0), row(1), row(2)};
}

/// An odd last pixel has a pair to itself, which says it twice.
void CompletePairs(const Samples& inLuma)
{
    if (inLuma.width % 2 != 0) {
        for (int y = 0; y < inLuma.height; ++y) {
            std::uint8_t* const last =
                inLuma.first + y * inLuma.rowBytes + std::ptrdiff_t(inLuma.width - 1) * inLuma.stepBytes;
            last[inLuma.stepBytes] = *last;
        }
    }
}

bool AreAlike(const Components& inComponents)
{
    const Samples& first = inComponents.samples[0];
    return std::all_of(inComponents.samples, inComponents.samples + inComponents.count,
                       [&](const Samples& inOther) {
                           return inOther.stepBytes == first.stepBytes && inOther.width == first.width &&
                                  inOther.height == first.height;
                       });
}

void CopyComponents(const Components& inFrom, const Components& inTo)
{
    const int count = std::min(inFrom.count, inTo.count);
    if (AreAlike(inFrom) && AreAlike(inTo)) {
        return CopySamples(inFrom.samples, inTo.samples, count, inTo.sampleBytes);
    }
    for (int i = 0; i < count; ++i) {
        CopySamples(inFrom.samples + i, inTo.samples + i, 1, inTo.sampleBytes);
    }
}

/// The alpha of a picture, which an AVFrame carries along: its size, then its rows without gaps.
struct AlphaNote {
    std::int32_t width;
    std::int32_t height;
};

std::size_t AlphaNoteBytes(const Samples& inAlpha, int inSampleBytes)
{
    return sizeof(AlphaNote) +
           std::size_t(inAlpha.width) * std::size_t(inAlpha.height) * std::size_t(inSampleBytes);
}

Samples SamplesOf(AVBufferRef& inNote, const Samples& inAlpha, int inSampleBytes)
{
    return {inNote.data + sizeof(AlphaNote), std::ptrdiff_t(inAlpha.width) * inSampleBytes, inSampleBytes,
            inAlpha.width, inAlpha.height};
}

void TakeAlphaAlong(const Components& inOurs, AVFrame& ioPicture)
{
    const Samples& alpha = inOurs.samples[kAlpha];
    ioPicture.opaque_ref = Allocated(av_buffer_alloc(AlphaNoteBytes(alpha, inOurs.sampleBytes)));
    const AlphaNote note{alpha.width, alpha.height};
    std::memcpy(ioPicture.opaque_ref->data, &note, sizeof note);
    const Samples kept = SamplesOf(*ioPicture.opaque_ref, alpha, inOurs.sampleBytes);
    CopySamples(&alpha, &kept, 1, inOurs.sampleBytes);
}

bool IsFor(const AVBufferRef* inNote, const Samples& inAlpha, int inSampleBytes)
{
    AlphaNote note;
    if (!inNote || inNote->size != AlphaNoteBytes(inAlpha, inSampleBytes)) {
        return false;
    }
    std::memcpy(&note, inNote->data, sizeof note); // a picture that was turned has as many bytes
    return note.width == inAlpha.width && note.height == inAlpha.height;
}

void BringAlphaBack(const AVFrame& inPicture, const Components& inOurs)
{
    const Samples& alpha = inOurs.samples[kAlpha];
    if (IsFor(inPicture.opaque_ref, alpha, inOurs.sampleBytes)) {
        const Samples kept = SamplesOf(*inPicture.opaque_ref, alpha, inOurs.sampleBytes);
        CopySamples(&kept, &alpha, 1, inOurs.sampleBytes);
        return;
    }
    constexpr float kOpaqueFloat = 1;
    constexpr std::uint32_t kOpaque = ~0u;
    const bool isFloat = inOurs.sampleBytes == sizeof kOpaqueFloat;
    FillSamples(alpha, inOurs.sampleBytes, isFloat ? static_cast<const void*>(&kOpaqueFloat) : &kOpaque);
}

void SetColorSpace(const color::ColorSpace& inSpace, bool inIsYUV, AVFrame& ioPicture)
{
    ioPicture.color_primaries = AVColorPrimaries(inSpace.primaries);
    ioPicture.color_trc = AVColorTransferCharacteristic(inSpace.transfer);
    if (inIsYUV) {
        ioPicture.colorspace = AVColorSpace(inSpace.matrix);
        ioPicture.color_range = inSpace.range == color::Range::kFull ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        ioPicture.chroma_location = AVCHROMA_LOC_LEFT;
    }
}

/// What a filter changed is taken over where we have a name for it.
color::ColorSpace ColorSpaceOf(const AVFrame& inPicture, bool inIsYUV, color::ColorSpace inLike)
{
    using namespace color;
    for (const Primaries known : {Primaries::kBT709, Primaries::kBT601_625, Primaries::kBT601_525,
                                  Primaries::kBT2020, Primaries::kP3D65}) {
        if (int(inPicture.color_primaries) == int(known)) {
            inLike.primaries = known;
        }
    }
    for (const Transfer known : {Transfer::kBT709, Transfer::kLinear, Transfer::kSRGB, Transfer::kBT2020_10,
                                 Transfer::kPQ, Transfer::kHLG}) {
        if (int(inPicture.color_trc) == int(known)) {
            inLike.transfer = known;
        }
    }
    if (!inIsYUV) {
        return inLike;
    }
    for (const Matrix known :
         {Matrix::kBT709, Matrix::kFCC, Matrix::kBT601_625, Matrix::kBT601_525, Matrix::kBT2020_NCL}) {
        if (int(inPicture.colorspace) == int(known)) {
            inLike.matrix = known;
        }
    }
    if (inPicture.color_range == AVCOL_RANGE_JPEG || inPicture.color_range == AVCOL_RANGE_MPEG) {
        inLike.range = inPicture.color_range == AVCOL_RANGE_JPEG ? Range::kFull : Range::kLimited;
    }
    return inLike;
}

PixelAspectRatio PixelShapeOf(const AVFrame& inPicture, const MF::IVideoFrameRef& inLike)
{
    const AVRational shape = inPicture.sample_aspect_ratio;
    if (shape.num > 0 && shape.den > 0) {
        return {std::uint32_t(shape.num), std::uint32_t(shape.den)};
    }
    return inLike ? inLike->GetPixelAspectRatio() : kPixelAspectRatio_Square;
}

constexpr std::size_t kWatchedAlignment = 64;

void FreeWatched(void*, std::uint8_t* inMemory)
{
    FreePluginMemory(reinterpret_cast<std::byte*>(inMemory), kWatchedAlignment);
}

/// Rows and a rest behind them as the library gives itself: its vectorised code may reach so far, and no
/// farther. The picture is the filter's own, which may work in place.
void GiveWatchedBuffer(AVFrame& ioPicture)
{
    constexpr int kReachBytes = 64;
    const auto format = AVPixelFormat(ioPicture.format);
    const int paddedHeight = FFALIGN(ioPicture.height, 32);
    int rowBytes[4] = {};
    std::size_t planeBytes[4] = {};
    ptrdiff_t wideRows[4] = {};
    if (av_image_fill_linesizes(rowBytes, format, FFALIGN(ioPicture.width, 8)) < 0) {
        throw std::bad_alloc();
    }
    for (int plane = 0; plane < 4; ++plane) {
        wideRows[plane] = ioPicture.linesize[plane] = FFALIGN(rowBytes[plane], kRowAlignment);
    }
    if (av_image_fill_plane_sizes(planeBytes, format, paddedHeight, wideRows) < 0) {
        throw std::bad_alloc();
    }
    for (int plane = 0; plane < 4 && planeBytes[plane] > 0; ++plane) {
        const std::size_t bytes = planeBytes[plane] + kReachBytes;
        PluginBuffer buffer(bytes, kWatchedAlignment, MemoryUse::kGiven);
        ioPicture.buf[plane] = Allocated(
            av_buffer_create(reinterpret_cast<std::uint8_t*>(buffer.Get()), bytes, &FreeWatched, nullptr, 0));
        ioPicture.data[plane] = reinterpret_cast<std::uint8_t*>(buffer.Release());
    }
    ioPicture.extended_data = ioPicture.data;
}

} // namespace

FramePtr ToAVFrame(const MF::IVideoFrameRef& inFrame, const Carrier& inCarrier, std::int64_t inTime)
{
    const PixelFormat format = inFrame->GetPixelFormat();
    FramePtr picture(Allocated(av_frame_alloc()));
    picture->format = inCarrier.format;
    picture->width = FFALIGN(int(inFrame->GetWidth()), kRowAlignment);
    picture->height = int(inFrame->GetHeight());
    if (IsPluginMemoryWatched()) {
        GiveWatchedBuffer(*picture);
    } else if (av_frame_get_buffer(picture.get(), kRowAlignment) < 0) {
        throw std::bad_alloc();
    }
    picture->width = int(inFrame->GetWidth());
    picture->pts = inTime;
    const PixelAspectRatio shape = inFrame->GetPixelAspectRatio();
    picture->sample_aspect_ratio = {int(shape.numerator), int(shape.denominator)};
    SetColorSpace(inFrame->GetColorSpace(), IsYUV(format), *picture);

    const OurPlanes planes = PlanesOf(inFrame, false);
    if (format == kPixelFormat_V210_422_10u) {
        for (int y = 0; y < picture->height; ++y) {
            UnpackV210Row(planes.pixels[0] + y * planes.rowBytes[0], picture->width,
                          PlanesOfRow(*picture, y));
        }
        return picture;
    }
    const Components ours = OurComponents(planes, format, picture->width, picture->height);
    const Components theirs = TheirComponents(*picture);
    CopyComponents(ours, theirs);
    if (picture->format == AV_PIX_FMT_UYVY422 || picture->format == AV_PIX_FMT_YUYV422) {
        CompletePairs(theirs.samples[0]);
    }
    if (HasAlpha(format) && !inCarrier.hasAlpha) {
        TakeAlphaAlong(ours, *picture);
    }
    return picture;
}

MF::IVideoFrameRef FromAVFrame(const AVFrame& inPicture, const Carrier& inCarrier, PixelFormat inFormat,
                               const MF::IVideoFrameRef& inLike)
{
    const auto like = inLike ? inLike->GetColorSpace() : color::GetDefaultColorSpace();
    MF::IVideoFrameRef frame;
    if (inPicture.width <= 0 || inPicture.height <= 0 ||
        !VF::CreateVideoFrame(frame, inFormat, std::uint32_t(inPicture.width),
                              std::uint32_t(inPicture.height), PixelShapeOf(inPicture, inLike),
                              ColorSpaceOf(inPicture, IsYUV(inFormat), like), false, false) ||
        !frame->InitializePixels(0)) {
        return {};
    }
    const OurPlanes planes = PlanesOf(frame, true);
    if (inFormat == kPixelFormat_V210_422_10u) {
        for (int y = 0; y < inPicture.height; ++y) {
            PackV210Row(PlanesOfRow(inPicture, y), inPicture.width,
                        planes.pixels[0] + y * planes.rowBytes[0]);
        }
        return frame;
    }
    const Components ours = OurComponents(planes, inFormat, inPicture.width, inPicture.height);
    CopyComponents(TheirComponents(inPicture), ours);
    if (inFormat == kPixelFormat_UYVY_422_8u) {
        CompletePairs(ours.samples[0]);
    }
    if (HasAlpha(inFormat) && !inCarrier.hasAlpha) {
        BringAlphaBack(inPicture, ours);
    }
    return frame;
}

void ScaleAlpha(AVFrame& ioPicture, double inPart)
{
    const Samples alpha = TheirComponents(ioPicture).samples[kAlpha];
    const int factor = int(std::lround(inPart * 256));
    for (int y = 0; y < alpha.height; ++y) {
        std::uint8_t* sample = alpha.first + y * alpha.rowBytes;
        for (int x = 0; x < alpha.width; ++x, sample += alpha.stepBytes) {
            *sample = std::uint8_t((*sample * factor + 128) / 256);
        }
    }
}

} // namespace trhost::effects::avfilter
