#pragma once

#include "Context.h"

#include <BE/Backend.h>

#include <functional>
#include <memory>

namespace trhost {

/// The library and its host libraries, up for as long as this lives: main thread, client name and versions,
/// preferences, shared folders, crash handling, the library itself, and the hooks that we lend it.
///
/// Threading: made and destroyed on the main thread, after all work on other threads is over.
class HostSession {
public:
    /// @throws Failure for preferences that cannot be read or options that are not valid; what the
    ///     library's start-up throws passes through. Nothing is left up then.
    HostSession(const GlobalOptions& inOptions, const StateFolders& inFolders, Output& ioOutput);
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    const std::shared_ptr<kiocore::threads::MainThread>& GetMainThread() const { return mMainThread; }

private:
    void StartUp(const GlobalOptions& inOptions, const StateFolders& inFolders, Output& ioOutput);
    void Close() noexcept;

    std::shared_ptr<kiocore::threads::MainThread> mMainThread;
    bool mLibraryIsUp = false;
};

/// The preferences of the one back end.
kiocore::InterfaceRef<BE::IPreferences> Preferences();

/// A folder of the preferences, with a trailing separator.
using FolderGetter = int (BE::IPreferences::*)(kiocore::UTF16String&) const;
/// @throws Failure (kExit_Failed) when there is none.
kiocore::UTF16String PreferredFolder(FolderGetter inGetter);
/// "<peak files folder>/Peak Files/".
kiocore::UTF16String PeakFilesFolder();
/// @throws Failure (kExit_Failed) naming the folder.
void MakeFolder(const kiocore::UTF16String& inFolder);

} // namespace trhost
