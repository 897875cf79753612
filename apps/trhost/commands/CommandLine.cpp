#include "CommandLine.h"

#include "Completion.h"
#include "Program.h"

#include "../devices/MediaTime.h"
#include "../support/Failure.h"
#include "../support/Quantities.h"

#include <CLI/CLI.hpp> // takes seconds to compile: included in this file only

#include <cstdio>
#include <exception>
#include <functional>
#include <limits>

namespace trhost {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  trhost ingest ~/Footage                     conform all media below a folder\n"
    "  trhost ingest ~/Footage                     again: all up to date\n"
    "  trhost cache show ~/Footage/clip.mov        what is recorded for one file\n"
    "  trhost cache find clip.mov --key PeakFile --up-to-date\n"
    "  trhost cache clean                          remove what belongs to media that changed or is gone\n"
    "  trhost cache prune --older-than 90d --max-size 50G --dry-run\n"
    "  trhost frame clip.mov --at 1.5s -o still.png  the picture on show at a time\n"
    "  trhost still ColorBars --size 1280x720 --format v210 -o bars.raw\n"
    "  trhost --state /tmp/try --json cache list   one JSON object a line\n"
    "  trhost play clip.mov --from 1:05            hear its sound\n"
    "  trhost record take1.wav                     until Ctrl-C\n"
    "  source <(trhost completion bash)\n"
    "\n"
    "Exit status: 0 done, 1 a negative answer (not found, stale, differs), 2 wrong usage, 3 failed.";

constexpr const char* kScriptHelp =
    "A script has one command a line; # begins a comment, \"...\" keeps blanks together:\n"
    "  player NAME [media=FILE] [device=D | sink=wav:FILE [pace=no]] [key=N] [priority=N]\n"
    "  recorder NAME [device=D] [rate=R] [channels=N] [key=N]\n"
    "  activate NAME [priority=N] [key=N]   (open NAME is the same)\n"
    "  record NAME [out=FILE]      stop NAME\n"
    "  deactivate NAME             reset\n"
    "  hold NAME                   release NAME\n"
    "  destroy NAME                wait 200ms\n"
    "  expect [not] CONDITION      await [not] CONDITION [within=2s]\n"
    "A condition is active NAME|nobody, waiting NAME|nobody [for NAME], open NAME,\n"
    "recording NAME, finished NAME or failed NAME.\n"
    "\n"
    "Example:\n"
    "  player player1 device=null key=1\n"
    "  recorder recorder1 device=null key=2\n"
    "  activate player1\n"
    "  record recorder1            # smaller priority: player1 is asked to let go\n"
    "  expect active recorder1\n"
    "  activate player1            # greater priority: replaces it without asking\n"
    "  expect active player1\n"
    "  expect recording recorder1";

using Command = std::function<int(Context&)>;

/// The command line's grammar, the values that it fills, and what is to be run then.
class Parser {
public:
    Parser() : mApp("Conforms media files and keeps track of the cache files made for them.", "trhost")
    {
        mApp.footer(kExamples);
        mApp.require_subcommand(1);
        mApp.get_formatter()->column_width(34);
        AddGlobalOptions();
        AddIngest();
        AddCache();
        AddAssets();
        AddDisplay();
        AddPrefs();
        AddFrame();
        AddStill();
        AddDevices();
        AddCompletion();
        LetOptionsStandAnywhere(mApp);
    }

    /// @return the exit status when everything is said already (help, version, wrong usage).
    std::optional<int> Parse(int inCount, char** inArguments)
    {
        try {
            mApp.parse(inCount, inArguments);
        } catch (const CLI::Success& success) {
            mApp.exit(success, std::cout, std::cerr); // help or version
            return kExit_Done;
        } catch (const CLI::ParseError& error) {
            // A word that is no command also leaves the command missing; the word is what helps.
            const std::vector<std::string> unknown = mApp.remaining(true);
            std::string text = error.get_exit_code() == int(CLI::ExitCodes::RequiredError) && !unknown.empty()
                                   ? "there is no command or option " + unknown.front()
                                   : error.what();
            for (char& letter : text) {
                letter = letter == '\n' ? ' ' : letter;
            }
            std::fprintf(stderr, "trhost: %s; see trhost --help\n", text.c_str());
            return kExit_Usage;
        }
        if (!mCompletionShell.empty()) {
            const std::string script = CompletionScript(Describe(mApp), mCompletionShell);
            std::fwrite(script.data(), 1, script.size(), stdout);
            return std::fflush(stdout) == 0 ? kExit_Done : kExit_Failed;
        }
        return std::nullopt;
    }

    const GlobalOptions& GetOptions() const { return mOptions; }
    const Command& GetCommand() const { return mCommand; }

private:
    void AddGlobalOptions()
    {
        mApp.set_version_flag("--version", ProgramVersion(), "Print the version");
        mApp.add_option(
                "--state", mOptions.stateFolder,
                "Keep preferences, records and cache files below this folder (default: the XDG folders)")
            ->type_name("DIR");
        mApp.add_flag("--json", mOptions.json, "Print one JSON object a line");
        mApp.add_flag("-q,--quiet", mOptions.quiet, "Print answers and errors only");
        mApp.add_option("--lang", mOptions.language, "Language of texts (default: from the environment)")
            ->type_name("LANGUAGE");
        mApp.add_option("--suite-version", mOptions.suiteVersion,
                        "Version of the host suite to work as (14.0)")
            ->type_name("VERSION");
        mApp.add_option("--app-name", mOptions.applicationName, "Name of the host application")
            ->type_name("NAME");
        mApp.add_option("--app-type", mOptions.applicationType, "Number of the host application's kind")
            ->type_name("NUMBER");
        mApp.add_option("--trace", mOptions.traces, "Trace a channel to standard error; may be repeated")
            ->type_name("CHANNEL[:LEVEL]")
            ->expected(1)
            ->take_all()
            ->allow_extra_args(false);
    }

    CLI::App* AddCommand(CLI::App& inParent, const char* inName, const char* inDescription, Command inCommand)
    {
        CLI::App* command = inParent.add_subcommand(inName, inDescription);
        if (inCommand) {
            command->callback([this, run = std::move(inCommand)] { mCommand = run; });
        }
        return command;
    }

    void AddIngest()
    {
        CLI::App* command = AddCommand(mApp, "ingest", "Make and record the cache files of media files",
                                       [this](Context& ioContext) { return Ingest(ioContext, mIngest); });
        command->add_option("path", mIngest.paths, "Media files, or folders to look for media in")
            ->required()
            ->type_name("PATH");
        command
            ->add_option("-j,--jobs", mIngest.jobs, "Files to work on at a time (default: one a processor)")
            ->check(CLI::Range(1, 1024))
            ->type_name("N");
        command->add_flag("--force", mIngest.force, "Make also what is up to date");
    }

    void AddCache()
    {
        CLI::App& cache = *AddCommand(mApp, "cache", "Look at and look after the media cache", nullptr);
        cache.require_subcommand(1);
        AddCacheQueries(cache);
        AddCacheChanges(cache);
        AddCacheCare(cache);
    }

    void AddCacheQueries(CLI::App& inCache)
    {
        CLI::App* find =
            AddCommand(inCache, "find", "Print the paths of recorded cache files; 1 when one is not there",
                       [this](Context& ioContext) { return CacheFind(ioContext, mFind); });
        find->add_option("media", mFind.media, "Media file")->required()->type_name("MEDIA");
        find->add_option("--stream", mFind.stream, "Only of this stream")->type_name("N");
        find->add_option("--key", mFind.key, "Only with this key")->type_name("KEY");
        find->add_flag("--up-to-date", mFind.upToDate, "Only what was made for the media as it is now");

        AddMediaCommand(inCache, "show", "Print a media file's record in full", &CacheShow);
        AddCommand(inCache, "list", "Print all records, one a line", &CacheList);
        AddMediaCommand(inCache, "folder", "Print the folder where the media's cache files belong",
                        &CacheFolder);
        CLI::App* dump = AddCommand(inCache, "dump", "Print what a record file holds, in stored order",
                                    [this](Context& ioContext) { return CacheDump(ioContext, mMedia); });
        dump->add_option("file", mMedia, "Record file (.mcdb)")->required()->type_name("FILE");
        AddCommand(inCache, "stats", "Print how many cache files there are and what they take", &CacheStats);
    }

    void AddMediaCommand(CLI::App& inCache, const char* inName, const char* inDescription,
                         int (*inFunction)(Context&, const std::string&))
    {
        CLI::App* command =
            AddCommand(inCache, inName, inDescription,
                       [this, inFunction](Context& ioContext) { return inFunction(ioContext, mMedia); });
        command->add_option("media", mMedia, "Media file")->required()->type_name("MEDIA");
    }

    void AddCacheChanges(CLI::App& inCache)
    {
        CLI::App* invalidate =
            AddCommand(inCache, "invalidate", "Mark a media file's cache files as not up to date",
                       [this](Context& ioContext) { return CacheInvalidate(ioContext, mInvalidate); });
        invalidate->add_option("media", mInvalidate.media, "Media file")->required()->type_name("MEDIA");
        invalidate->add_option("--stream", mInvalidate.stream, "A stream that it has")
            ->required()
            ->type_name("N");

        CLI::App* copy =
            AddCommand(inCache, "copy", "Let the cache files follow media that was copied to a folder",
                       [this](Context& ioContext) { return CacheCopy(ioContext, mCopy); });
        copy->add_option("media", mCopy.media, "Media file that was copied")->required()->type_name("MEDIA");
        copy->add_option("folder", mCopy.folder, "Folder that holds the copy, under the same name")
            ->required()
            ->type_name("FOLDER");
    }

    void AddCacheCare(CLI::App& inCache)
    {
        CLI::App* clean =
            AddCommand(inCache, "clean", "Remove the cache files of media that changed or is gone",
                       [this](Context& ioContext) { return CacheClean(ioContext, mDryRun); });
        AddDryRun(*clean, mDryRun);

        CLI::App* deleteAll =
            AddCommand(inCache, "delete-all", "Remove all records, cache, metadata and peak files",
                       [this](Context& ioContext) { return CacheDeleteAll(ioContext, mDeleteAll); });
        deleteAll->add_flag("-y,--yes", mDeleteAll.yes, "Do not ask");
        AddDryRun(*deleteAll, mDeleteAll.dryRun);

        CLI::App* prune =
            AddCommand(inCache, "prune", "Remove the cache files that were not used for longest",
                       [this](Context& ioContext) { return CachePrune(ioContext, mPrune); });
        prune
            ->add_option_function<std::string>(
                "--older-than",
                [this](const std::string& inText) {
                    mPrune.olderThan = ParseAge(inText);
                    if (!mPrune.olderThan) {
                        throw CLI::ValidationError("--older-than", "found " + inText +
                                                                       ", expected an age such as 90d, "
                                                                       "12h or 2w");
                    }
                },
                "Those not used for this long: 90d, 12h, 2w")
            ->type_name("AGE");
        prune
            ->add_option_function<std::string>(
                "--max-size",
                [this](const std::string& inText) {
                    mPrune.maxBytes = ParseSize(inText);
                    if (!mPrune.maxBytes) {
                        throw CLI::ValidationError("--max-size", "found " + inText +
                                                                     ", expected a size such as 50G or "
                                                                     "800M");
                    }
                },
                "As many as must go for the rest to fit: 50G, 800M")
            ->type_name("SIZE");
        AddDryRun(*prune, mPrune.dryRun);

        CLI::App* verify = AddCommand(inCache, "verify", "Compare the records with what lies on disk",
                                      [this](Context& ioContext) { return CacheVerify(ioContext, mVerify); });
        CLI::Option* repair = verify->add_flag("--repair", mVerify.repair,
                                               "Set records that cannot be read aside as .mcdb.bad");
        AddDryRun(*verify, mVerify.dryRun)->needs(repair);
    }

    static CLI::Option* AddDryRun(CLI::App& inCommand, bool& outFlag)
    {
        return inCommand.add_flag("-n,--dry-run", outFlag, "Print what would be done and touch nothing");
    }

    void AddAssets()
    {
        CLI::App& assets = *AddCommand(
            mApp, "assets", "Convert lists of assets and apply their points to a project", nullptr);
        assets.require_subcommand(1);
        AddCommand(assets, "to-paths", "Read specifiers on standard input, print their paths", &AssetsToPaths)
            ->footer("Example:\n  trhost assets from-project film.hproj | trhost assets to-paths");
        AddCommand(assets, "from-paths", "Read paths on standard input, print specifiers without points",
                   &AssetsFromPaths)
            ->footer("Example:\n  echo '[\"/footage/a.mov\"]' | trhost assets from-paths");

        CLI::App* fromProject =
            AddCommand(assets, "from-project", "Print specifiers of a project's clips",
                       [this](Context& ioContext) { return AssetsFromProject(ioContext, mProject); });
        fromProject->add_option("file", mProject, "Project file (.hproj)")->required()->type_name("FILE");
        fromProject->footer("Example:\n  trhost assets from-project film.hproj > points.json");

        CLI::App* apply = AddCommand(assets, "apply",
                                     "Read specifiers on standard input, set the points of a project's clips",
                                     [this](Context& ioContext) { return AssetsApply(ioContext, mApply); });
        apply->add_option("--project", mApply.project, "Project file (.hproj)")
            ->required()
            ->type_name("FILE");
        apply->add_option("-o,--output", mApply.output, "Save the project here (default: where it was)")
            ->type_name("FILE");
        AddDryRun(*apply, mApply.dryRun);
        apply->footer("A point that a specifier does not name is taken away. Times are ticks, 254016000000 a "
                      "second.\n\nExample:\n"
                      "  echo '[{\"Path\":\"/footage/a.mov\",\"InPoint\":0,\"OutPoint\":508032000000}]' |\n"
                      "      trhost assets apply --project film.hproj --dry-run");

        CLI::App* newProject =
            AddCommand(assets, "new-project", "Make a project of media files; folders become bins",
                       [this](Context& ioContext) { return AssetsNewProject(ioContext, mNewProject); });
        newProject->add_option("file", mNewProject.project, "Project file (.hproj) to make")
            ->required()
            ->type_name("FILE");
        newProject->add_option("media", mNewProject.media, "Media files, or folders to look for media in")
            ->required()
            ->type_name("MEDIA");
        newProject->add_flag("--force", mNewProject.force, "Replace a file that is there");
        newProject->footer("Example:\n  trhost assets new-project film.hproj ~/Footage ~/Music/theme.wav");
    }

    void AddDisplay()
    {
        AddCommand(mApp, "display", "Show what displays are told: ranges, filters, fill colour", &Display)
            ->footer("Example:\n  trhost display --app-type 5");
    }

    void AddPrefs()
    {
        CLI::App& prefs = *AddCommand(mApp, "prefs", "Show and change the preferences", nullptr);
        prefs.require_subcommand(1);
        AddCommand(prefs, "show", "Print all preferences", &PrefsShow);
        CLI::App* set = AddCommand(prefs, "set", "Change one preference",
                                   [this](Context& ioContext) { return PrefsSet(ioContext, mPrefsSet); });
        set->add_option("key", mPrefsSet.key, "See prefs show")->required()->type_name("KEY");
        set->add_option("value", mPrefsSet.value,
                        "A folder; on, off or default; full, file or none; a size; dark or light")
            ->required()
            ->type_name("VALUE");
    }

    /// An option whose text must mean something.
    /// @param inParse  gives an optional.
    template <typename Parse, typename Take>
    static CLI::Option* AddParsed(CLI::App& inCommand, const std::string& inNames, std::string inExpected,
                                  const std::string& inDescription, Parse inParse, Take inTake)
    {
        const std::string name = inNames.substr(inNames.find("--"));
        return inCommand.add_option_function<std::string>(
            inNames,
            [=](const std::string& inText) {
                const auto value = inParse(inText);
                if (!value) {
                    throw CLI::ValidationError(name, "found " + inText + ", expected " + inExpected);
                }
                inTake(*value);
            },
            inDescription);
    }

    static void AddFrameForm(CLI::App& inCommand, FrameForm& outForm, const char* inUsualSize)
    {
        inCommand.add_option("-o,--output", outForm.output, "File to write: .png or .raw; replaced if there")
            ->required()
            ->type_name("FILE");
        AddParsed(inCommand, "--size", "a size such as 1920x1080, sides up to 65535", inUsualSize,
                  &ParsePictureSize, [&outForm](PictureSize inSize) { outForm.size = inSize; })
            ->type_name("WxH");
        std::string names;
        for (const kiomediatypes::NamedPixelFormat& format : kiomediatypes::kPixelFormats) {
            names += std::string(names.empty() ? "" : ", ") + format.name;
        }
        const auto formatNamed = [](const std::string& inName) -> std::optional<kiomediatypes::PixelFormat> {
            const auto format = kiomediatypes::PixelFormatNamed(inName);
            return format == kiomediatypes::kPixelFormat_Any ? std::nullopt : std::optional(format);
        };
        const std::string description = "Pixel format: " + names;
        AddParsed(inCommand, "--format", "one of " + names, description, formatNamed,
                  [&outForm](kiomediatypes::PixelFormat inFormat) { outForm.format = inFormat; })
            ->type_name("FORMAT");
        AddParsed(inCommand, "--par", "a ratio such as 16:15", "Width of a pixel to its height",
                  &ParsePixelAspectRatio,
                  [&outForm](kiomediatypes::PixelAspectRatio inRatio) { outForm.pixelAspectRatio = inRatio; })
            ->type_name("N:D");
        AddParsed(inCommand, "--quality", "draft, medium or high",
                  "How it is scaled: draft, medium, high (default)", &ParseRenderQuality,
                  [&outForm](kiomediatypes::RenderQuality inQuality) { outForm.quality = inQuality; })
            ->type_name("QUALITY");
    }

    void AddFrame()
    {
        CLI::App* command = AddCommand(mApp, "frame", "Write the picture of media that is on show at a time",
                                       [this](Context& ioContext) { return Frame(ioContext, mFrame); });
        command->add_option("media", mFrame.media, "Media file")->required()->type_name("MEDIA");
        AddParsed(*command, "--at", "a time such as 1.5s, 1500ms, 00:00:01.5, or a frame such as 36f",
                  "Time from the start: 1.5s, 1500ms, 00:00:01.5, or frame: 36f (default: 0s)",
                  &ParseMediaTime, [this](const MediaTime& inTime) { mFrame.at = inTime; })
            ->type_name("TIME");
        command->add_option("--stream", mFrame.stream, "Number of the video stream (default: the first)")
            ->check(CLI::NonNegativeNumber)
            ->type_name("N");
        command->add_flag("--strict", mFrame.strict,
                          "Fail when the media is offline (default: write the still for that)");
        AddFrameForm(*command, mFrame.form, "Scale to this size (default: the picture's own)");
        command->footer("Example: trhost frame clip.mov --at 00:00:01.5 --size 960x540 -o still.png");
    }

    void AddStill()
    {
        CLI::App* still = mApp.add_subcommand("still", "Write a built-in still picture, or list them");
        still->add_option("still", mStill.image, "Its number or name")->type_name("ID|NAME");
        AddFrameForm(*still, mStill.form, "Its size (default: 1920x1080)");
        still->footer("Example: trhost still MediaOffline --size 640x360 -o offline.png");
        CLI::App* list =
            AddCommand(*still, "list", "Print number, name, resource and size of all", &StillList);
        // Options that a still needs are not asked of the list.
        CLI::Option* const output = still->get_option("--output");
        output->required(false);
        still->final_callback([this, still, list, output] {
            if (list->parsed()) {
                return;
            }
            if (mStill.image.empty()) {
                throw CLI::RequiredError("still ID or NAME, or list,");
            }
            if (output->count() == 0) {
                throw CLI::RequiredError(still->get_name() + ": --output");
            }
            mCommand = [this](Context& ioContext) { return WriteStill(ioContext, mStill); };
        });
    }

    void AddDevices()
    {
        CLI::App* play = AddCommand(mApp, "play", "Play the sound of a media file",
                                    [this](Context& ioContext) { return PlaySound(ioContext, mPlay); });
        play->add_option("media", mPlay.media, "Media file")->required()->type_name("MEDIA");
        play->add_option("--stream", mPlay.stream, "This stream (default: the first with sound)")
            ->check(CLI::NonNegativeNumber)
            ->type_name("N");
        CLI::Option* device =
            play->add_option("--device", mPlay.device, "Audio device (default, null, hw:1,0 ...)")
                ->type_name("DEVICE");
        CLI::Option* sink = play->add_option("--sink", mPlay.sink, "Write to a WAVE file instead: wav:FILE")
                                ->excludes(device)
                                ->type_name("SINK");
        AddTime(*play, "--from", mPlay.from, "Begin at this time: 12.5, 1:05.2, 200ms");
        AddTime(*play, "--duration", mPlay.duration, "Play only so much");
        AddSampleForm(*play, mPlay.format, "Of the sink's samples: s16, s24, f32 (default: as the media)")
            ->needs(sink);
        play->add_flag("--real-time", mPlay.realTime, "Let the sink take its time")->needs(sink);
        play->add_flag("--force", mPlay.force, "Overwrite the sink's file")->needs(sink);

        CLI::App* record = AddCommand(mApp, "record", "Record sound to a WAVE file, until Ctrl-C",
                                      [this](Context& ioContext) { return RecordSound(ioContext, mRecord); });
        record->add_option("file", mRecord.file, "WAVE file to make")->required()->type_name("FILE");
        record->add_option("--device", mRecord.device, "Audio device (default, null, hw:1,0 ...)")
            ->type_name("DEVICE");
        AddTime(*record, "--duration", mRecord.duration, "Stop by itself: 90, 1:30, 500ms");
        record->add_option("--rate", mRecord.rate, "Samples a second (48000)")
            ->check(CLI::Range(8000, 384000))
            ->type_name("HZ");
        record->add_option("--channels", mRecord.channels, "1 to 64 (2)")
            ->check(CLI::Range(1, 64))
            ->type_name("N");
        AddSampleForm(*record, mRecord.format, "Of the samples: s16, s24, f32 (s16)");
        record->add_flag("--force", mRecord.force, "Overwrite the file");

        CLI::App* devices =
            AddCommand(mApp, "devices", "Run a script of players and recorders",
                       [this](Context& ioContext) { return RunDevices(ioContext, mDevices); });
        devices->add_option("script", mDevices.script, "Script, or - for standard input")
            ->required()
            ->type_name("SCRIPT");
        devices->add_flag("--force", mDevices.force, "Let the script overwrite files");
        devices->footer(kScriptHelp);
    }

    static void AddTime(CLI::App& inCommand, const char* inName,
                        std::optional<std::chrono::nanoseconds>& outTime, const char* inDescription)
    {
        inCommand
            .add_option_function<std::string>(
                inName,
                [inName, &outTime](const std::string& inText) {
                    outTime = devices::ParseMediaTime(inText);
                    if (!outTime) {
                        throw CLI::ValidationError(inName, "found " + inText +
                                                               ", expected a time such as 12.5, 1:05 or "
                                                               "200ms");
                    }
                },
                inDescription)
            ->type_name("TIME");
    }

    static CLI::Option* AddSampleForm(CLI::App& inCommand, std::string& outForm, const char* inDescription)
    {
        return inCommand.add_option("--format", outForm, inDescription)
            ->check(CLI::IsMember({"s16", "s24", "f32"}))
            ->type_name("FORMAT");
    }

    void AddCompletion()
    {
        CLI::App* completion = mApp.add_subcommand("completion", "Print a shell's completion script");
        completion->add_option("shell", mCompletionShell, "bash, zsh or fish")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}))
            ->type_name("SHELL");
    }

    static void LetOptionsStandAnywhere(CLI::App& inApp)
    {
        for (CLI::App* command : inApp.get_subcommands([](CLI::App*) { return true; })) {
            command->fallthrough();
            LetOptionsStandAnywhere(*command);
        }
    }

    static CommandNode Describe(const CLI::App& inApp)
    {
        CommandNode node;
        node.name = inApp.get_name();
        node.description = inApp.get_description();
        for (const CLI::Option* option : inApp.get_options()) {
            if (option->get_positional()) {
                node.takesFiles = node.name != "completion" && option->get_type_name() != "KEY";
                continue;
            }
            CommandNode::Option described;
            for (const std::string& name : option->get_snames()) {
                described.names.push_back("-" + name);
            }
            for (const std::string& name : option->get_lnames()) {
                described.names.push_back("--" + name);
            }
            described.description = option->get_description();
            described.takesValue = option->get_items_expected_max() > 0;
            described.takesFolder = option->get_type_name() == "DIR";
            node.options.push_back(std::move(described));
        }
        if (node.name == "completion") {
            node.positionalChoices = {"bash", "zsh", "fish"};
        }
        for (const CLI::App* command : inApp.get_subcommands([](const CLI::App*) { return true; })) {
            node.commands.push_back(Describe(*command));
        }
        return node;
    }

    CLI::App mApp;
    GlobalOptions mOptions;
    Command mCommand;
    IngestOptions mIngest;
    FindOptions mFind;
    std::string mMedia;
    InvalidateOptions mInvalidate;
    CopyOptions mCopy;
    bool mDryRun = false;
    DeleteAllOptions mDeleteAll;
    PruneOptions mPrune;
    VerifyOptions mVerify;
    PrefsSetOptions mPrefsSet;
    FrameOptions mFrame;
    StillOptions mStill;
    std::string mProject;
    AssetsApplyOptions mApply;
    NewProjectOptions mNewProject;
    PlayOptions mPlay;
    RecordOptions mRecord;
    DevicesOptions mDevices;
    std::string mCompletionShell;
};

} // namespace

int RunProgram(int inCount, char** inArguments) noexcept
{
    try {
        Parser parser;
        if (const auto status = parser.Parse(inCount, inArguments)) {
            return *status;
        }
        return RunCommand(parser.GetOptions(), parser.GetCommand());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "trhost: %s\n", error.what());
        return kExit_Failed;
    }
}

} // namespace trhost
