#include "CommandGroups.h"

#include "../../support/Quantities.h"

namespace trhost {

namespace {

const std::vector<std::string> kDialogNames = {"effects-manage", "restart-prompt", "progress", "redirect"};

} // namespace

void AddLook(CommandGrammar inCommand, DialogOptions& outOptions)
{
    inCommand
        .Option("--theme", outOptions.theme,
                "$$$/Halcyon/TrHost/Help/Look/Theme=Colours: dark or light (default: the preference)")
        .OneOf({"dark", "light"})
        .Type("THEME");
    inCommand
        .ParsedInto(
            "--scale", "$$$/Halcyon/TrHost/Help/Look/Scale=Device pixels per unit (default: the desktop's)",
            "$$$/Halcyon/TrHost/Help/Expected/Scale=a number from 0.5 to 4", &ParseScale, outOptions.scale)
        .Type("FACTOR");
}

OptionGrammar AddInWindow(CommandGrammar inCommand, bool& outFlag)
{
    return inCommand.Flag("--ui", outFlag, "$$$/Halcyon/TrHost/Help/Ui=Show the progress in a window");
}

DialogCommands::DialogCommands(CommandGrammar inRoot)
{
    const CommandGrammar group =
        inRoot.Add("ui", "$$$/Halcyon/TrHost/Help/Dialogs=Show dialogs to test scripts instead of people");
    group.Footer(
        Shown("$$$/Halcyon/TrHost/Help/Dialogs/Names=Dialogs are @0 and @1. Without a display, @2 draws into "
              "memory.#{@0 and @1: names to be typed}",
              {u"effects-manage, restart-prompt, progress", u"redirect", u"QT_QPA_PLATFORM=offscreen"}) +
        "\n\n" +
        Examples({{"trhost ui dump restart-prompt"},
                  {"trhost ui screenshot effects-manage manager.png --scale 2 --theme light"},
                  {"trhost ui drive effects-manage search.ui"}}));

    AddAttendance(group, "dump",
                  "$$$/Halcyon/TrHost/Help/Dialogs/Dump=Print what a dialog is made of, as JSON",
                  ui::Attendance::kDump);
    AddAttendance(group, "screenshot", "$$$/Halcyon/TrHost/Help/Dialogs/Screenshot=Write a dialog's picture",
                  ui::Attendance::kScreenshot)
        .Option("file", mDialog.dialog.file,
                "$$$/Halcyon/TrHost/Help/Dialogs/Screenshot/File=File to write: .png; replaced if there")
        .Required()
        .Type("FILE");
    AddAttendance(group, "drive",
                  "$$$/Halcyon/TrHost/Help/Dialogs/Drive=Use a dialog with a script of mouse and key events",
                  ui::Attendance::kScript)
        .Option("script", mDialog.dialog.file,
                "$$$/Halcyon/TrHost/Help/Dialogs/Drive/Script=File with one event a line")
        .Required()
        .Type("SCRIPT");
}

CommandGrammar DialogCommands::AddAttendance(CommandGrammar inGroup, const char* inName,
                                             const char* inDescription, ui::Attendance inAttendance)
{
    const CommandGrammar command =
        inGroup.Add(inName, inDescription, [this, inAttendance](Context& ioContext) {
            mDialog.dialog.attendance = inAttendance;
            return ShowDialog(ioContext, mDialog);
        });
    command.Option("name", mDialog.name, "$$$/Halcyon/TrHost/Help/Dialogs/Name=Dialog")
        .Required()
        .OneOf(kDialogNames)
        .Type("NAME");
    command
        .Option(
            "--plugins", mDialog.search.folders,
            "$$$/Halcyon/TrHost/Help/Effects/Plugins=Look for plug-ins in this folder too; may be repeated")
        .Type("DIR")
        .Repeatable();
    command.Flag(
        "--another-app", mDialog.changedInAnotherApp,
        "$$$/Halcyon/TrHost/Help/Dialogs/AnotherApp=The restart prompt after changes in another application");
    AddLook(command, mDialog.dialog);
    return command;
}

} // namespace trhost
