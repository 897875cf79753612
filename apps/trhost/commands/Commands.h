#pragma once

#include "../support/Context.h"
#include "../support/FrameOutput.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Every command is a function of what it works with and of what was said on the command line. It returns
/// the program's exit status, or throws: Failure carries its own, everything else means kExit_Failed.
/// Paths are in the system's bytes.
namespace trhost {

struct IngestOptions {
    std::vector<std::string> paths;
    int jobs = 0; ///< 0 = as many as there are processors
    bool force = false;
};
int Ingest(Context& ioContext, const IngestOptions& inOptions);

struct FindOptions {
    std::string media;
    std::optional<std::string> stream;
    std::optional<std::string> key;
    bool upToDate = false;
};
int CacheFind(Context& ioContext, const FindOptions& inOptions);
int CacheShow(Context& ioContext, const std::string& inMedia);
int CacheList(Context& ioContext);
int CacheFolder(Context& ioContext, const std::string& inMedia);
int CacheDump(Context& ioContext, const std::string& inRecordFile);
int CacheStats(Context& ioContext);

struct InvalidateOptions {
    std::string media;
    unsigned long stream = 0;
};
int CacheInvalidate(Context& ioContext, const InvalidateOptions& inOptions);

struct CopyOptions {
    std::string media;
    std::string folder;
};
int CacheCopy(Context& ioContext, const CopyOptions& inOptions);

struct CleanOptions {
    bool dryRun = false;
    bool inWindow = false; ///< progress in a window, where it can be cancelled
};
int CacheClean(Context& ioContext, const CleanOptions& inOptions);

struct DeleteAllOptions {
    bool yes = false;
    bool dryRun = false;
    bool inWindow = false;
};
int CacheDeleteAll(Context& ioContext, const DeleteAllOptions& inOptions);

struct PruneOptions {
    std::optional<std::chrono::nanoseconds> olderThan;
    std::optional<std::uint64_t> maxBytes;
    bool dryRun = false;
};
int CachePrune(Context& ioContext, const PruneOptions& inOptions);

struct VerifyOptions {
    bool repair = false;
    bool dryRun = false;
};
int CacheVerify(Context& ioContext, const VerifyOptions& inOptions);

/// Specifiers on standard input, their paths out; and the other way round.
int AssetsToPaths(Context& ioContext);
int AssetsFromPaths(Context& ioContext);
/// Specifiers of a project's clips.
int AssetsFromProject(Context& ioContext, const std::string& inProject);
struct AssetsApplyOptions {
    std::string project;
    std::optional<std::string> output; ///< the project itself when absent
    bool dryRun = false;
};
int AssetsApply(Context& ioContext, const AssetsApplyOptions& inOptions);
struct NewProjectOptions {
    std::string project;
    std::vector<std::string> media;
    bool force = false;
};
int AssetsNewProject(Context& ioContext, const NewProjectOptions& inOptions);

int Display(Context& ioContext);

int PrefsShow(Context& ioContext);
struct PrefsSetOptions {
    std::string key;
    std::string value;
};
int PrefsSet(Context& ioContext, const PrefsSetOptions& inOptions);

struct FrameOptions {
    std::string media;
    MediaTime at;
    std::optional<int> stream;
    bool strict = false;   ///< fail instead of writing the still for media that is offline
    bool inWindow = false; ///< tell in a window which plug-in the media needs
    FrameForm form;
};
int Frame(Context& ioContext, const FrameOptions& inOptions);

struct StillOptions {
    std::string image; ///< its number or name
    FrameForm form;
};
int WriteStill(Context& ioContext, const StillOptions& inOptions);
int StillList(Context& ioContext);

struct CompareOptions {
    std::string a; ///< a picture, or a folder of them; so is b
    std::string b;
    std::optional<std::string> difference; ///< where to paint what differs: a file, or a folder
    std::optional<std::string> report;     ///< a folder for a page
    float tolerance = 0;                   ///< of full scale
    int jobs = 0;                          ///< 0 = as many as there are processors
};
/// @return kExit_Done when all is the same, kExit_Negative when something differs, kExit_Failed when
/// something
///     could not be compared.
int Compare(Context& ioContext, const CompareOptions& inOptions);

struct RawWriteOptions {
    std::string source; ///< PNG, raw frame or clip
    std::optional<MediaTime> at;
    std::optional<int> stream;
    FrameForm form;
};
int RawWrite(Context& ioContext, const RawWriteOptions& inOptions);
/// @return kExit_Negative when one is no valid frame.
int RawInfo(Context& ioContext, const std::vector<std::string>& inFiles);

struct PlayOptions {
    std::string media;
    int stream = -1; ///< -1 = the first one with sound
    std::string device = "default";
    std::string sink; ///< "wav:FILE"; empty: the device
    std::optional<std::chrono::nanoseconds> from;
    std::optional<std::chrono::nanoseconds> duration;
    std::string format; ///< of the sink: "s16", "s24", "f32"; empty: as the media has it
    bool realTime = false;
    bool force = false;
};
int PlaySound(Context& ioContext, const PlayOptions& inOptions);

struct RecordOptions {
    std::string file;
    std::string device = "default";
    std::optional<std::chrono::nanoseconds> duration;
    int rate = 48000;
    int channels = 2;
    std::string format = "s16";
    bool force = false;
};
int RecordSound(Context& ioContext, const RecordOptions& inOptions);

struct DevicesOptions {
    std::string script; ///< a file, or "-"
    bool force = false;
};
int RunDevices(Context& ioContext, const DevicesOptions& inOptions);

} // namespace trhost
