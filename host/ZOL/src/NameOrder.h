#pragma once

namespace ZOL {

/// Orders native names (zero-terminated) as their 16-bit forms are ordered, unit by unit, without making
/// those. That is the order of the bytes but for two cases: characters beyond U+FFFF come before U+E000 to
/// U+FFFF, and bytes that are no UTF-8 stand between them.
/// @return negative, 0 or positive.
int CompareNames(const char* inA, const char* inB);

} // namespace ZOL
