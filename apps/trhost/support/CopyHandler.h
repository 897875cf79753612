#pragma once

#include <TR/IMediaAcceleratorCopy.h>
#include <kiocore/classref/InterfaceRef.h>

namespace trhost {

/// Lets trhost's cache files follow media that was copied: the copy's identity is that of the file with the
/// source media's name beside the copied cache file. When no such media can be read the copy is recorded as
/// stale, for the next cleaning to remove.
kiocore::InterfaceRef<TR::IMediaAcceleratorCopy> CreateCopyHandler();

} // namespace trhost
