#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/ImmutableString.h>

#include <string_view>

namespace kiocore::utility {

/// A text that lives as long as the process, in memory of its own that nobody can write to: a crash handler
/// finds it whole whatever was freed, and whatever a plug-in did to the heap. Copies are not counted. The
/// same text twice is one; none is ever given back, so this is for texts of which a process has a limited
/// number.
/// @throws std::bad_alloc.
///
/// Threading: any thread.
KIO_EXPORT ImmutableString MakePermanentText(std::string_view inText);

} // namespace kiocore::utility
