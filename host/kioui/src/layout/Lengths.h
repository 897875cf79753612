#pragma once

// Sharing out a length among what lies behind one another. Included by sources of kioui only.

#include <vector>

namespace kioui::layout {

/// What one element asks for along the direction.
struct Length {
    int minimum = 0;
    double stretch = 0;
    bool isGap = false; // never shorter than its minimum
};

/// Whole units that add up to inTotal, in proportion to the weights: every element has its share rounded
/// down, and what that leaves goes to those whose share was cut most, the first among equals. Nothing to
/// anybody when no weight is above 0.
std::vector<int> ShareOut(int inTotal, const std::vector<double>& inWeights);

/// How long each element is in inAvailable; together exactly as long, unless nothing stretches and there is
/// room to spare, or the gaps alone are longer.
std::vector<int> SolveLengths(const std::vector<Length>& inLengths, int inAvailable);

} // namespace kioui::layout
