#pragma once

#include <media/MediaModule.h>

namespace trhost {

/// The media module, loaded by the first call: most runs find everything up to date and never need it.
/// @throws kio_exception (kError_File) when it is not there or cannot be loaded, naming what is missing;
///     Failure (kExit_Failed) when it was built for another version of trhost.
///
/// Threading: any thread; callers wait for the first one.
media::IMediaModule& LoadMediaModule();

/// Cancels what the media module does once the user has interrupted the program.
class InterruptCancel final : public media::ICancel {
public:
    bool IsCancelled() const noexcept override;
};

} // namespace trhost
