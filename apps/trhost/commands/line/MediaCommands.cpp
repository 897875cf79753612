#include "CommandGroups.h"

#include "../../support/Quantities.h"

namespace trhost {

OptionGrammar AddDryRun(CommandGrammar inCommand, bool& outFlag)
{
    return inCommand.Flag("-n,--dry-run", outFlag,
                          "$$$/Halcyon/TrHost/Help/DryRun=Print what would be done and touch nothing");
}

MediaCommands::MediaCommands(CommandGrammar inRoot)
{
    const CommandGrammar ingest =
        inRoot.Add("ingest", "$$$/Halcyon/TrHost/Help/Ingest=Make and record the cache files of media files",
                   [this](Context& ioContext) { return Ingest(ioContext, mIngest); });
    ingest
        .Option("path", mIngest.paths,
                "$$$/Halcyon/TrHost/Help/MediaPaths=Media files, or folders to look for media in")
        .Required()
        .Type("PATH");
    ingest
        .Option("-j,--jobs", mIngest.jobs,
                "$$$/Halcyon/TrHost/Help/Ingest/Jobs=Files to work on at a time (default: one a processor)")
        .Range(1, 1024)
        .Type("N");
    ingest.Flag("--force", mIngest.force,
                "$$$/Halcyon/TrHost/Help/Ingest/Force=Make also what is up to date");

    const CommandGrammar cache =
        inRoot.Add("cache", "$$$/Halcyon/TrHost/Help/Cache=Look at and look after the media cache");
    AddCacheQueries(cache);
    AddCacheChanges(cache);
    AddCacheCare(cache);
    AddPreferences(inRoot);
}

void MediaCommands::AddCacheQueries(CommandGrammar inCache)
{
    const CommandGrammar find = inCache.Add(
        "find",
        "$$$/Halcyon/TrHost/Help/Cache/Find=Print the paths of recorded cache files; 1 when one is not there",
        [this](Context& ioContext) { return CacheFind(ioContext, mFind); });
    find.Option("media", mFind.media, "$$$/Halcyon/TrHost/Help/MediaFile=Media file")
        .Required()
        .Type("MEDIA");
    find.Option("--stream", mFind.stream, "$$$/Halcyon/TrHost/Help/Cache/Find/Stream=Only of this stream")
        .Type("N");
    find.Option("--key", mFind.key, "$$$/Halcyon/TrHost/Help/Cache/Find/Key=Only with this key").Type("KEY");
    find.Flag("--up-to-date", mFind.upToDate,
              "$$$/Halcyon/TrHost/Help/Cache/Find/UpToDate=Only what was made for the media as it is now");

    AddMediaCommand(inCache, "show", "$$$/Halcyon/TrHost/Help/Cache/Show=Print a media file's record in full",
                    &CacheShow);
    inCache.Add("list", "$$$/Halcyon/TrHost/Help/Cache/List=Print all records, one a line", &CacheList);
    AddMediaCommand(
        inCache, "folder",
        "$$$/Halcyon/TrHost/Help/Cache/Folder=Print the folder where the media's cache files belong",
        &CacheFolder);
    inCache
        .Add("dump", "$$$/Halcyon/TrHost/Help/Cache/Dump=Print what a record file holds, in stored order",
             [this](Context& ioContext) { return CacheDump(ioContext, mMedia); })
        .Option("file", mMedia, "$$$/Halcyon/TrHost/Help/Cache/Dump/File=Record file (.mcdb)")
        .Required()
        .Type("FILE");
    inCache.Add("stats",
                "$$$/Halcyon/TrHost/Help/Cache/Stats=Print how many cache files there are and what they take",
                &CacheStats);
}

void MediaCommands::AddMediaCommand(CommandGrammar inCache, const char* inName, const char* inDescription,
                                    int (*inFunction)(Context&, const std::string&))
{
    inCache
        .Add(inName, inDescription,
             [this, inFunction](Context& ioContext) { return inFunction(ioContext, mMedia); })
        .Option("media", mMedia, "$$$/Halcyon/TrHost/Help/MediaFile=Media file")
        .Required()
        .Type("MEDIA");
}

void MediaCommands::AddCacheChanges(CommandGrammar inCache)
{
    const CommandGrammar invalidate = inCache.Add(
        "invalidate",
        "$$$/Halcyon/TrHost/Help/Cache/Invalidate=Mark a media file's cache files as not up to date",
        [this](Context& ioContext) { return CacheInvalidate(ioContext, mInvalidate); });
    invalidate.Option("media", mInvalidate.media, "$$$/Halcyon/TrHost/Help/MediaFile=Media file")
        .Required()
        .Type("MEDIA");
    invalidate
        .Option("--stream", mInvalidate.stream,
                "$$$/Halcyon/TrHost/Help/Cache/Invalidate/Stream=A stream that it has")
        .Required()
        .Type("N");

    const CommandGrammar copy = inCache.Add(
        "copy",
        "$$$/Halcyon/TrHost/Help/Cache/Copy=Let the cache files follow media that was copied to a folder",
        [this](Context& ioContext) { return CacheCopy(ioContext, mCopy); });
    copy.Option("media", mCopy.media, "$$$/Halcyon/TrHost/Help/Cache/Copy/Media=Media file that was copied")
        .Required()
        .Type("MEDIA");
    copy.Option("folder", mCopy.folder,
                "$$$/Halcyon/TrHost/Help/Cache/Copy/Folder=Folder that holds the copy, under the same name")
        .Required()
        .Type("FOLDER");
}

void MediaCommands::AddCacheCare(CommandGrammar inCache)
{
    const CommandGrammar clean = inCache.Add(
        "clean",
        "$$$/Halcyon/TrHost/Help/Cache/Clean=Remove the cache files of media that changed or is gone",
        [this](Context& ioContext) { return CacheClean(ioContext, mClean); });
    AddInWindow(clean, mClean.inWindow).Excludes(AddDryRun(clean, mClean.dryRun));

    const CommandGrammar deleteAll = inCache.Add(
        "delete-all",
        "$$$/Halcyon/TrHost/Help/Cache/DeleteAll=Remove all records, cache, metadata and peak files",
        [this](Context& ioContext) { return CacheDeleteAll(ioContext, mDeleteAll); });
    deleteAll.Flag("-y,--yes", mDeleteAll.yes, "$$$/Halcyon/TrHost/Help/Cache/DeleteAll/Yes=Do not ask");
    AddInWindow(deleteAll, mDeleteAll.inWindow).Excludes(AddDryRun(deleteAll, mDeleteAll.dryRun));

    const CommandGrammar prune = inCache.Add(
        "prune", "$$$/Halcyon/TrHost/Help/Cache/Prune=Remove the cache files that were not used for longest",
        [this](Context& ioContext) { return CachePrune(ioContext, mPrune); });
    prune
        .ParsedInto(
            "--older-than",
            "$$$/Halcyon/TrHost/Help/Cache/Prune/OlderThan=Those not used for this long: 90d, 12h, 2w",
            "$$$/Halcyon/TrHost/Help/Expected/CachePruneOlderThan=an age such as 90d, 12h or 2w", &ParseAge,
            mPrune.olderThan)
        .Type("AGE");
    prune
        .ParsedInto(
            "--max-size",
            "$$$/Halcyon/TrHost/Help/Cache/Prune/MaxSize=As many as must go for the rest to fit: 50G, 800M",
            "$$$/Halcyon/TrHost/Help/Expected/CachePruneMaxSize=a size such as 50G or 800M", &ParseSize,
            mPrune.maxBytes)
        .Type("SIZE");
    AddDryRun(prune, mPrune.dryRun);

    const CommandGrammar verify = inCache.Add(
        "verify", "$$$/Halcyon/TrHost/Help/Cache/Verify=Compare the records with what lies on disk",
        [this](Context& ioContext) { return CacheVerify(ioContext, mVerify); });
    const OptionGrammar repair = verify.Flag(
        "--repair", mVerify.repair,
        "$$$/Halcyon/TrHost/Help/Cache/Verify/Repair=Set records that cannot be read aside as .mcdb.bad");
    AddDryRun(verify, mVerify.dryRun).Needs(repair);
}

void MediaCommands::AddPreferences(CommandGrammar inRoot)
{
    const CommandGrammar prefs =
        inRoot.Add("prefs", "$$$/Halcyon/TrHost/Help/Prefs=Show and change the preferences");
    prefs.Add("show", "$$$/Halcyon/TrHost/Help/Prefs/Show=Print all preferences", &PrefsShow);
    const CommandGrammar set =
        prefs.Add("set", "$$$/Halcyon/TrHost/Help/Prefs/Set=Change one preference",
                  [this](Context& ioContext) { return PrefsSet(ioContext, mPrefsSet); });
    set.Option("key", mPrefsSet.key, "$$$/Halcyon/TrHost/Help/Prefs/Set/Key=See prefs show")
        .Required()
        .Type("KEY");
    set.Option("value", mPrefsSet.value,
               "$$$/Halcyon/TrHost/Help/Prefs/Set/Value=A folder; on, off or default; full, file or none; a "
               "size; dark or light")
        .Required()
        .Type("VALUE");
}

} // namespace trhost
