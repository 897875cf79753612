#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace VF {

/// How two pictures differ.
struct ComputedDifference {
    /// In per cent: 100 x the mean over all pixels and channels of squared differences, as fractions of full
    /// scale. Never 0 when some pixel differs, however little.
    float variance = 0;
    std::uint64_t numDiffPixels = 0;
    std::int32_t status = 0; ///< negative: not compared, see below
};

/// Why pictures were not compared, as unsigned numbers.
enum DifferenceStatus : std::uint32_t {
    kDifference_NoFrame = 0xA3EC0001,     ///< one is empty, has no memory, or rows too few or too short
    kDifference_SizesDiffer = 0xA3EC0002, ///< in width or height
    kDifference_NoMemory = 0xA3EC0003,    ///< for a converted copy, or the difference picture
    kDifference_BadPicture = 0xA3EC0004, ///< the difference picture has another size, is shared, or is one of
                                         ///< the two where it must not be
    kDifference_BadTolerance = 0xA3EC0005, ///< not a number from 0 to 1
};

/// More of the same, for those who show it.
struct DifferenceDetails {
    /// The smallest rectangle that holds all differing pixels; all 0 when there are none.
    std::uint32_t left = 0, top = 0, width = 0, height = 0;
    double largest = 0; ///< difference of a channel, as a fraction of full scale
    /// Peak signal to noise ratio in dB, of all channels together; infinite when nothing differs.
    double psnr = 0;
    /// In which of the rows something differs, so that who writes the picture need not look for it: one bit a
    /// row, the lowest first. Empty when nobody looked.
    std::vector<std::uint64_t> differingRows;
};

/// Compares two pictures of one size pixel by pixel and paints where they differ.
///
/// A pixel differs when any of its channels, alpha among them, differs by more than the tolerance: also where
/// alpha is 0 and colour cannot be seen, where alpha alone differs, and by one step of 16 bits. Pictures of
/// one format are compared in it, channel by channel: of YUV these are Y and the Cb and Cr that the pixel
/// shares with its neighbours, out of the full range of codes (255, or 1023 for v210). What is stored beside
/// the picture (row padding, a last group's unused pixels) never counts. Floats: 1 is full scale; equal bits
/// and zeros of either sign are equal; a difference that is no finite number counts as full scale.
///
/// Pictures of different formats are both converted to BGRA of the deeper of their depths (8 bits; 16 for 10
/// to 16; float) and compared there. Pixel aspect ratios and colour spaces are not compared; conversion from
/// YUV minds the frame's matrix and range.
///
/// Variance is taken of all channels of all pixels, those within the tolerance too; chroma counts once for
/// each pixel that shares it.
///
/// The difference picture is opaque black where nothing differs. Elsewhere every channel that differs is
/// lifted, so that one step can be seen: 64 + 0.75 d, with the absolute difference d in 255ths of full scale
/// (in 16 bits 64 x 257 + 0.75 d; in floats by the same proportions), to the nearest step, halves up, at most
/// full scale. Where only alpha differs,
/// and for YUV, the pixel becomes grey of the largest difference. In another format than that of the
/// comparison it is painted in BGRA and converted.
///
/// The results do not depend on the processor or on how many threads took part.
///
/// @param outDifference  made with CreateVideoFrame, of the same size, in any format; gets its memory here.
///     May be empty: nothing is painted. May be inCompareFrame itself where both are of one RGB format and it
///     is not shared: its pixels are replaced, which saves the memory of a third frame. Holds anything after
///     a failure.
/// @param inTolerance  of full scale, 0 to 1. Differences are rounded to single precision to be compared with
///     it, so k / 255.0f tolerates k steps of 8 bits.
/// @param outDetails  may be null. Set on success.
///
/// Threading: any thread; large pictures are worked on by several, as in VideoFrameManipulators.
KIO_EXPORT ComputedDifference ComputeDifferenceImages(const MF::IVideoFrameRef& inFrame,
                                                      const MF::IVideoFrameRef& inCompareFrame,
                                                      const MF::IVideoFrameRef& outDifference,
                                                      float inTolerance,
                                                      DifferenceDetails* outDetails = nullptr);

/// The figures as notes for the "tEXt" chunks of a difference picture (see PNGOptions): "Differing Pixels",
/// "Variance" (per cent), "Bounding Box" ("left,top,width,height"), "Largest Difference" (of full scale) and
/// "PSNR" (dB, or "infinite").
KIO_EXPORT std::vector<std::pair<std::string, std::string>>
DescribeDifference(const ComputedDifference& inDifference, const DifferenceDetails& inDetails);

} // namespace VF
