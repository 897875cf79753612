#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace ZOL {

/// Under which key of the user's registry (kiocore/utility/RegistryKey.h) this host keeps all that it keeps
/// there: the suite's maker, the client's name and the suite's version, with a separator at the end, as in
/// "Software\Halcyon\Media Host\14.0\". A backslash in the client's name is an underscore here; a client
/// without a name is "Media Host".
///
/// Threading: any thread.
KIO_EXPORT kiocore::UTF16String GetRegistryBaseKey();

} // namespace ZOL
