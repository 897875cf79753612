#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

namespace TR {

using kiocore::Guid;
using kiocore::UTF16String;

/// Class-factory identifiers of the media cache database's two classes.
extern KIO_EXPORT const Guid kMediaAcceleratorDatabaseClassID;
extern KIO_EXPORT const Guid kMediaAcceleratorDatabaseEntryClassID;

/// Bringing the library up and down, and what the host lends it.
///
/// Threading: Initialize and Shutdown from any thread, under one recursive lock. The resolver is
/// registered once by the host, before the database's cleaning can run; no lock is taken for it.
namespace TRFoundation {

/// Called once by each client. The first call starts everything: back end, station of effect types,
/// class registration, database, shared queues, built-in stills.
/// @return 0.
/// @throws kio_exception (kError_Startup) on a processor without SSE. What a start-up step throws passes
///     through. After a failure the library is not up, and a later call tries again from the start.
KIO_EXPORT int Initialize();

/// Called once for each Initialize. The last call stops everything, and first lets work run out that was
/// posted to the main thread. A surplus call takes the count below 0, where the next Initialize only
/// brings it back to 0.
/// @return 0. What a step throws passes through; the count has gone down all the same.
KIO_EXPORT int Shutdown();

/// The host's knowledge of which document and content state the file at a path has now.
/// @param inFlag  the host's own; the library's cleaning passes false.
/// @return negative when unknown, the out-parameters then untouched.
using GetDocumentIDAndContentStateFromPathFunction = int (*)(const UTF16String& inPath, bool inFlag,
                                                             Guid& outDocumentID, Guid& outContentState);

/// Stores the host's function in place of any earlier one; null unregisters.
KIO_EXPORT void
RegisterGetDocumentIDAndContentStateFromPathFunction(GetDocumentIDAndContentStateFromPathFunction inFunction);

/// Asks the registered function. @return its result; -1, the out-parameters untouched, when there is none.
KIO_EXPORT int GetDocumentIDAndContentStateFromPath(const UTF16String& inPath, bool inFlag,
                                                    Guid& outDocumentID, Guid& outContentState);

} // namespace TRFoundation
} // namespace TR
