#include "ColorTags.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace trhost::media {
namespace {

using namespace kiomediatypes::color;

constexpr int kMostRowsOfStandardDefinition = 576;

void Note(std::string& ioNote, const char* inWhat, const char* inFound, const char* inTaken)
{
    ioNote += std::string(ioNote.empty() ? "" : ", ") + inWhat + " " + (inFound ? inFound : "of no name") +
              " taken for " + inTaken;
}

/// The colour space that the picture has as a whole if nothing is said about a part of it.
ColorSpace CustomFor(const AVFrame& inFrame)
{
    switch (inFrame.colorspace) {
    case AVCOL_SPC_BT709:
        return GetDefaultColorSpace();
    case AVCOL_SPC_BT470BG:
        return kColorSpace_BT601_625;
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_FCC:
        return kColorSpace_BT601_525;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return kColorSpace_BT2020;
    default:
        break;
    }
    switch (inFrame.color_primaries) {
    case AVCOL_PRI_BT470BG:
        return kColorSpace_BT601_625;
    case AVCOL_PRI_SMPTE170M:
        return kColorSpace_BT601_525;
    case AVCOL_PRI_BT2020:
        return kColorSpace_BT2020;
    case AVCOL_PRI_BT709:
        return GetDefaultColorSpace();
    default:
        break;
    }
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(AVPixelFormat(inFrame.format));
    const bool isRGB = format && format->flags & AV_PIX_FMT_FLAG_RGB;
    if (isRGB || inFrame.height > kMostRowsOfStandardDefinition) {
        return GetDefaultColorSpace();
    }
    const bool is625 = inFrame.height == 576 || inFrame.height == 288;
    return is625 ? kColorSpace_BT601_625 : kColorSpace_BT601_525;
}

void SetMatrix(const AVFrame& inFrame, ColorSpace& ioSpace, std::string& ioNote)
{
    switch (inFrame.colorspace) {
    case AVCOL_SPC_BT709:
        ioSpace.matrix = Matrix::kBT709;
        break;
    case AVCOL_SPC_FCC:
        ioSpace.matrix = Matrix::kFCC;
        break;
    case AVCOL_SPC_BT470BG:
        ioSpace.matrix = Matrix::kBT601_625;
        break;
    case AVCOL_SPC_SMPTE170M:
        ioSpace.matrix = Matrix::kBT601_525;
        break;
    case AVCOL_SPC_BT2020_NCL:
        ioSpace.matrix = Matrix::kBT2020_NCL;
        break;
    case AVCOL_SPC_BT2020_CL:
        ioSpace.matrix = Matrix::kBT2020_NCL;
        Note(ioNote, "matrix", "of constant luminance", "that of non-constant");
        break;
    case AVCOL_SPC_RGB:
    case AVCOL_SPC_UNSPECIFIED:
    case AVCOL_SPC_RESERVED:
        break; // the custom
    default:
        ioSpace.matrix = Matrix::kBT709;
        Note(ioNote, "matrix", av_color_space_name(inFrame.colorspace), "BT.709");
        break;
    }
}

void SetPrimaries(const AVFrame& inFrame, ColorSpace& ioSpace, std::string& ioNote)
{
    switch (inFrame.color_primaries) {
    case AVCOL_PRI_BT709:
        ioSpace.primaries = Primaries::kBT709;
        break;
    case AVCOL_PRI_BT470BG:
        ioSpace.primaries = Primaries::kBT601_625;
        break;
    case AVCOL_PRI_SMPTE170M:
    case AVCOL_PRI_SMPTE240M: // the same colours
        ioSpace.primaries = Primaries::kBT601_525;
        break;
    case AVCOL_PRI_BT2020:
        ioSpace.primaries = Primaries::kBT2020;
        break;
    case AVCOL_PRI_SMPTE432:
        ioSpace.primaries = Primaries::kP3D65;
        break;
    case AVCOL_PRI_SMPTE431:
        ioSpace.primaries = Primaries::kP3D65;
        Note(ioNote, "primaries", "with the white of cinemas", "P3 D65");
        break;
    case AVCOL_PRI_UNSPECIFIED:
    case AVCOL_PRI_RESERVED0:
    case AVCOL_PRI_RESERVED:
        break;
    default:
        Note(ioNote, "primaries", av_color_primaries_name(inFrame.color_primaries), "the custom");
        break;
    }
}

void SetTransfer(const AVFrame& inFrame, ColorSpace& ioSpace, std::string& ioNote)
{
    switch (inFrame.color_trc) {
    case AVCOL_TRC_BT709:
    case AVCOL_TRC_SMPTE170M: // the same curve
        ioSpace.transfer = Transfer::kBT709;
        break;
    case AVCOL_TRC_LINEAR:
        ioSpace.transfer = Transfer::kLinear;
        break;
    case AVCOL_TRC_IEC61966_2_1:
        ioSpace.transfer = Transfer::kSRGB;
        break;
    case AVCOL_TRC_BT2020_10:
    case AVCOL_TRC_BT2020_12: // the same curve, more digits
        ioSpace.transfer = Transfer::kBT2020_10;
        break;
    case AVCOL_TRC_SMPTE2084:
        ioSpace.transfer = Transfer::kPQ;
        break;
    case AVCOL_TRC_ARIB_STD_B67:
        ioSpace.transfer = Transfer::kHLG;
        break;
    case AVCOL_TRC_UNSPECIFIED:
    case AVCOL_TRC_RESERVED0:
    case AVCOL_TRC_RESERVED:
        break;
    default:
        Note(ioNote, "transfer", av_color_transfer_name(inFrame.color_trc), "the custom");
        break;
    }
}

Range RangeOf(const AVFrame& inFrame)
{
    if (inFrame.color_range == AVCOL_RANGE_JPEG || inFrame.color_range == AVCOL_RANGE_MPEG) {
        return inFrame.color_range == AVCOL_RANGE_JPEG ? Range::kFull : Range::kLimited;
    }
    switch (inFrame.format) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
        return Range::kFull;
    default:
        break;
    }
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(AVPixelFormat(inFrame.format));
    const bool isGray = format && format->nb_components <= 2;
    return isGray ? Range::kFull : Range::kLimited;
}

} // namespace

ColorSpace ColorSpaceOf(const AVFrame& inFrame, std::string& outNote)
{
    ColorSpace space = CustomFor(inFrame);
    std::string note;
    SetMatrix(inFrame, space, note);
    SetPrimaries(inFrame, space, note);
    SetTransfer(inFrame, space, note);
    space.range = RangeOf(inFrame);
    if (!note.empty()) {
        outNote = note;
    }
    return space;
}

ChromaPosition ChromaPositionOf(const AVFrame& inFrame)
{
    switch (inFrame.chroma_location) {
    case AVCHROMA_LOC_CENTER:
        return {1, 1};
    case AVCHROMA_LOC_TOPLEFT:
        return {0, 0};
    case AVCHROMA_LOC_TOP:
        return {1, 0};
    case AVCHROMA_LOC_BOTTOMLEFT:
        return {0, 2};
    case AVCHROMA_LOC_BOTTOM:
        return {1, 2};
    default:
        return {0, 1};
    }
}

} // namespace trhost::media
