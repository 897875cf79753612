#include "CommandGroups.h"

#include "../../support/Quantities.h"

namespace trhost {

OptionGrammar AddDryRun(CommandGrammar inCommand, bool& outFlag)
{
    return inCommand.Flag("-n,--dry-run", outFlag, "Print what would be done and touch nothing");
}

MediaCommands::MediaCommands(CommandGrammar inRoot)
{
    const CommandGrammar ingest =
        inRoot.Add("ingest", "Make and record the cache files of media files",
                   [this](Context& ioContext) { return Ingest(ioContext, mIngest); });
    ingest.Option("path", mIngest.paths, "Media files, or folders to look for media in")
        .Required()
        .Type("PATH");
    ingest.Option("-j,--jobs", mIngest.jobs, "Files to work on at a time (default: one a processor)")
        .Range(1, 1024)
        .Type("N");
    ingest.Flag("--force", mIngest.force, "Make also what is up to date");

    const CommandGrammar cache = inRoot.Add("cache", "Look at and look after the media cache");
    AddCacheQueries(cache);
    AddCacheChanges(cache);
    AddCacheCare(cache);
    AddPreferences(inRoot);
}

void MediaCommands::AddCacheQueries(CommandGrammar inCache)
{
    const CommandGrammar find =
        inCache.Add("find", "Print the paths of recorded cache files; 1 when one is not there",
                    [this](Context& ioContext) { return CacheFind(ioContext, mFind); });
    find.Option("media", mFind.media, "Media file").Required().Type("MEDIA");
    find.Option("--stream", mFind.stream, "Only of this stream").Type("N");
    find.Option("--key", mFind.key, "Only with this key").Type("KEY");
    find.Flag("--up-to-date", mFind.upToDate, "Only what was made for the media as it is now");

    AddMediaCommand(inCache, "show", "Print a media file's record in full", &CacheShow);
    inCache.Add("list", "Print all records, one a line", &CacheList);
    AddMediaCommand(inCache, "folder", "Print the folder where the media's cache files belong", &CacheFolder);
    inCache
        .Add("dump", "Print what a record file holds, in stored order",
             [this](Context& ioContext) { return CacheDump(ioContext, mMedia); })
        .Option("file", mMedia, "Record file (.mcdb)")
        .Required()
        .Type("FILE");
    inCache.Add("stats", "Print how many cache files there are and what they take", &CacheStats);
}

void MediaCommands::AddMediaCommand(CommandGrammar inCache, const char* inName, const char* inDescription,
                                    int (*inFunction)(Context&, const std::string&))
{
    inCache
        .Add(inName, inDescription,
             [this, inFunction](Context& ioContext) { return inFunction(ioContext, mMedia); })
        .Option("media", mMedia, "Media file")
        .Required()
        .Type("MEDIA");
}

void MediaCommands::AddCacheChanges(CommandGrammar inCache)
{
    const CommandGrammar invalidate =
        inCache.Add("invalidate", "Mark a media file's cache files as not up to date",
                    [this](Context& ioContext) { return CacheInvalidate(ioContext, mInvalidate); });
    invalidate.Option("media", mInvalidate.media, "Media file").Required().Type("MEDIA");
    invalidate.Option("--stream", mInvalidate.stream, "A stream that it has").Required().Type("N");

    const CommandGrammar copy =
        inCache.Add("copy", "Let the cache files follow media that was copied to a folder",
                    [this](Context& ioContext) { return CacheCopy(ioContext, mCopy); });
    copy.Option("media", mCopy.media, "Media file that was copied").Required().Type("MEDIA");
    copy.Option("folder", mCopy.folder, "Folder that holds the copy, under the same name")
        .Required()
        .Type("FOLDER");
}

void MediaCommands::AddCacheCare(CommandGrammar inCache)
{
    const CommandGrammar clean =
        inCache.Add("clean", "Remove the cache files of media that changed or is gone",
                    [this](Context& ioContext) { return CacheClean(ioContext, mClean); });
    AddInWindow(clean, mClean.inWindow).Excludes(AddDryRun(clean, mClean.dryRun));

    const CommandGrammar deleteAll =
        inCache.Add("delete-all", "Remove all records, cache, metadata and peak files",
                    [this](Context& ioContext) { return CacheDeleteAll(ioContext, mDeleteAll); });
    deleteAll.Flag("-y,--yes", mDeleteAll.yes, "Do not ask");
    AddInWindow(deleteAll, mDeleteAll.inWindow).Excludes(AddDryRun(deleteAll, mDeleteAll.dryRun));

    const CommandGrammar prune =
        inCache.Add("prune", "Remove the cache files that were not used for longest",
                    [this](Context& ioContext) { return CachePrune(ioContext, mPrune); });
    prune
        .ParsedInto("--older-than", "Those not used for this long: 90d, 12h, 2w",
                    "an age such as 90d, 12h or 2w", &ParseAge, mPrune.olderThan)
        .Type("AGE");
    prune
        .ParsedInto("--max-size", "As many as must go for the rest to fit: 50G, 800M",
                    "a size such as 50G or 800M", &ParseSize, mPrune.maxBytes)
        .Type("SIZE");
    AddDryRun(prune, mPrune.dryRun);

    const CommandGrammar verify =
        inCache.Add("verify", "Compare the records with what lies on disk",
                    [this](Context& ioContext) { return CacheVerify(ioContext, mVerify); });
    const OptionGrammar repair =
        verify.Flag("--repair", mVerify.repair, "Set records that cannot be read aside as .mcdb.bad");
    AddDryRun(verify, mVerify.dryRun).Needs(repair);
}

void MediaCommands::AddPreferences(CommandGrammar inRoot)
{
    const CommandGrammar prefs = inRoot.Add("prefs", "Show and change the preferences");
    prefs.Add("show", "Print all preferences", &PrefsShow);
    const CommandGrammar set = prefs.Add("set", "Change one preference", [this](Context& ioContext) {
        return PrefsSet(ioContext, mPrefsSet);
    });
    set.Option("key", mPrefsSet.key, "See prefs show").Required().Type("KEY");
    set.Option("value", mPrefsSet.value,
               "A folder; on, off or default; full, file or none; a size; dark or light")
        .Required()
        .Type("VALUE");
}

} // namespace trhost
