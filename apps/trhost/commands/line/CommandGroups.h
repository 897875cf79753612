#pragma once

#include "../Commands.h"
#include "../Dialogs.h"
#include "../EffectOptions.h"
#include "../ScriptOptions.h"
#include "Grammar.h"

#include <optional>
#include <string>
#include <vector>

/// What can be said on the command line, in groups. Each adds its commands to the grammar, holds the values
/// that they fill, and must outlive the grammar's run.
namespace trhost {

class MediaCommands {
public:
    explicit MediaCommands(CommandGrammar inRoot);

private:
    void AddCacheQueries(CommandGrammar inCache);
    void AddMediaCommand(CommandGrammar inCache, const char* inName, const char* inDescription,
                         int (*inFunction)(Context&, const std::string&));
    void AddCacheChanges(CommandGrammar inCache);
    void AddCacheCare(CommandGrammar inCache);
    void AddPreferences(CommandGrammar inRoot);

    IngestOptions mIngest;
    FindOptions mFind;
    std::string mMedia;
    InvalidateOptions mInvalidate;
    CopyOptions mCopy;
    CleanOptions mClean;
    DeleteAllOptions mDeleteAll;
    PruneOptions mPrune;
    VerifyOptions mVerify;
    PrefsSetOptions mPrefsSet;
};

class AssetCommands {
public:
    explicit AssetCommands(CommandGrammar inRoot);

private:
    std::string mProject;
    AssetsApplyOptions mApply;
    NewProjectOptions mNewProject;
};

class PictureCommands {
public:
    explicit PictureCommands(CommandGrammar inRoot);

private:
    void AddStill(CommandGrammar inRoot);

    FrameOptions mFrame;
    StillOptions mStill;
};

class CompareCommands {
public:
    explicit CompareCommands(CommandGrammar inRoot);

private:
    void AddRaw(CommandGrammar inRoot);

    CompareOptions mCompare;
    RawWriteOptions mRawWrite;
    std::vector<std::string> mRawFiles;
};

class DeviceCommands {
public:
    explicit DeviceCommands(CommandGrammar inRoot);

private:
    void AddPlay(CommandGrammar inRoot);
    void AddRecord(CommandGrammar inRoot);

    PlayOptions mPlay;
    RecordOptions mRecord;
    DevicesOptions mDevices;
};

class EffectCommands {
public:
    explicit EffectCommands(CommandGrammar inRoot);

private:
    void AddQuestions(CommandGrammar inEffects);
    void AddSwitches(CommandGrammar inEffects);
    void AddRuns(CommandGrammar inEffects);
    static void AddParameters(CommandGrammar inCommand, std::vector<std::string>& outParameters);
    void AddTypeFile(CommandGrammar inEffects);

    EffectSearch mSearch;
    std::string mName;
    EffectTypesOptions mTypes;
    CrashReportOptions mReport;
    EffectsEnableOptions mEnable;
    EffectsCheckOptions mCheck;
    EffectsRunOptions mRun;
    EffectsTransitionOptions mTransition;
    EffectTypeFileOptions mTypeFile;
    DialogOptions mManage;
};

class DialogCommands {
public:
    explicit DialogCommands(CommandGrammar inRoot);

private:
    CommandGrammar AddAttendance(CommandGrammar inGroup, const char* inName, const char* inDescription,
                                 ui::Attendance inAttendance);

    ShowDialogOptions mDialog;
};

class ScriptCommands {
public:
    explicit ScriptCommands(CommandGrammar inRoot);

private:
    ScriptOptions mScript;
    std::optional<std::string> mFile;
    std::vector<std::string> mArguments;
};

/// How windows are to look.
void AddLook(CommandGrammar inCommand, DialogOptions& outOptions);

/// What can be said of the form of a picture that is written; the option that names the file is added apart.
void AddPictureForm(CommandGrammar inCommand, FrameForm& outForm, const char* inUsualSize);
/// Empty when it is none.
std::optional<kiomediatypes::PixelFormat> FormatNamed(const std::string& inName);
/// The flag of commands that can tell what they would do.
OptionGrammar AddDryRun(CommandGrammar inCommand, bool& outFlag);
/// The flag of commands that can show their progress in a window.
OptionGrammar AddInWindow(CommandGrammar inCommand, bool& outFlag);

} // namespace trhost
