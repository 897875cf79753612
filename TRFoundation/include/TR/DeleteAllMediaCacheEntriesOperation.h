#pragma once

#include <ZOL/BatchOperation.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>

namespace TR {

/// An operation that deletes all record, cache, metadata cache and peak files in the folders that the
/// preferences name, and peak subfolders that are then empty. Files of other kinds are left. An abort
/// ends the folder in hand only; the later ones are wiped in full.
KIO_EXPORT kiocore::InterfaceRef<ZOL::IBatchOperation> CreateDeleteAllMediaCacheEntriesOperation();

} // namespace TR
