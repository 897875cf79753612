#pragma once

#include "direct/DirectConversion.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// The conversions once more, one pixel at a time in double precision and without a thought for speed: what
// the fast rows are measured by.
namespace direct {

using kiomediatypes::PixelFormat;
using kiomediatypes::color::Matrix;
using kiomediatypes::color::Range;

struct Form {
    PixelFormat format;
    Matrix matrix = Matrix::kBT709;
    Range range = Range::kLimited;
};

/// One row, exactly as large as it must be, so that a sanitizer sees a byte read or written beyond.
using Row = std::vector<std::byte>;
Row EmptyRow(PixelFormat inFormat, std::size_t inWidth);

/// Stored components in the order in which they lie; of v210 codes, three a word.
std::vector<double> Components(PixelFormat inFormat, const Row& inRow);
/// The opposite; values must fit.
Row RowOf(PixelFormat inFormat, const std::vector<double>& inComponents);

/// What the components of the destination should be, before they are rounded and bounded.
std::vector<double> Expected(const Form& inSource, const Row& inRow, const Form& inDestination,
                             std::size_t inWidth);
/// The same from components, which need not be whole.
std::vector<double> Expected(const Form& inSource, const std::vector<double>& inComponents,
                             const Form& inDestination, std::size_t inWidth);
/// Greatest value that a component can hold; 0 for floats, which have no bounds.
double MostOf(PixelFormat inFormat);

/// Does one row directly.
Row Converted(const Form& inSource, const Row& inRow, const Form& inDestination, std::size_t inWidth);

VF::SourcePicture SourceOf(const Form& inForm, const std::byte* inPixels, std::size_t inRowBytes,
                           std::uint32_t inWidth, std::uint32_t inHeight);
VF::DestinationPicture DestinationOf(const Form& inForm, std::byte* inPixels, std::size_t inRowBytes,
                                     std::uint32_t inWidth, std::uint32_t inHeight);

} // namespace direct
