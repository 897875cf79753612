#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>
#include <kiomediatypes/PixelAspectRatio.h>
#include <kiomediatypes/PixelFormat.h>
#include <kiomediatypes/RenderQuality.h>

namespace TR {

using kiocore::InterfaceRef;
using kiocore::UTF16String;

/// The built-in stills (media offline, colour bars and others) as frames of any form. An image is loaded at
/// its natural size by the one registered loader; finished frames and natural images are kept in the shared
/// frame cache, so the next request for the same form is one look-up.
///
/// Threading: LoadImage on any thread; the rest at start-up and shutdown. Keys of the cache do not tell the
/// resource's name: what is in the cache is served also after a rename.
class KIO_EXPORT StaticImageFactory {
public:
    enum Image : int {
        kMediaPending = 1,
        kMediaOffline = 2,
        kPlayingOnHardware = 3,
        kBlank = 4, ///< has no resource: opaque black
        kColorBars = 5,
        kCapturePreviewOnHardware = 6,
        /// Has no resource either, but a loader of the host may draw one for the size that is asked for; its
        /// natural image is therefore loaded anew for each new form.
        kSizeDependent = 7,
        kMediaOfflineStill = 8, ///< the picture of kMediaOffline, for still-image media
        kAudioVideoClip = 10000,
    };
    using LoaderFunction = InterfaceRef<MF::IVideoFrame> (*)(int inImage);

    /// Sets what loads an image at its natural size; null for nothing. Called without a lock of ours.
    static void Register(LoaderFunction inFunction);

    /// @param inQuality  how it is scaled; part of what makes a form.
    /// @param inCreateBlankIfMissing  an image that cannot be loaded is opaque black, and stays that in the
    ///     cache.
    /// @return shared with the cache and read-only; empty when it cannot be made.
    static InterfaceRef<MF::IVideoFrame> LoadImage(int inImage, unsigned int inWidth, unsigned int inHeight,
                                                   kiomediatypes::PixelFormat inFormat,
                                                   kiomediatypes::PixelAspectRatio inPixelAspectRatio,
                                                   kiomediatypes::RenderQuality inQuality,
                                                   bool inCreateBlankIfMissing);
    static InterfaceRef<MF::IVideoFrame> LoadImage(int inImage, unsigned int inWidth, unsigned int inHeight,
                                                   kiomediatypes::PixelFormat inFormat,
                                                   kiomediatypes::PixelAspectRatio inPixelAspectRatio,
                                                   kiomediatypes::RenderQuality inQuality);

    /// Another resource of the default loader for kMediaPending, or for kMediaOffline and
    /// kMediaOfflineStill together; other images keep theirs. Takes no lock.
    static void SetStaticImageResourceName(Image inImage, const UTF16String& inName);

    /// Registers the default loader, which reads the library's own resources. Called by start-up.
    static void InitializeDefault();
    /// Unregisters the loader. Called by shutdown.
    static void TerminateDefault();
};

} // namespace TR
