#include "CommandGroups.h"

#include "../../support/Quantities.h"

namespace trhost {

namespace {

const std::vector<std::string> kDialogNames = {"effects-manage", "restart-prompt", "progress", "redirect"};

} // namespace

void AddLook(CommandGrammar inCommand, DialogOptions& outOptions)
{
    inCommand.Option("--theme", outOptions.theme, "Colours: dark or light (default: the preference)")
        .OneOf({"dark", "light"})
        .Type("THEME");
    inCommand
        .ParsedInto("--scale", "Device pixels per unit (default: the desktop's)", "a number from 0.5 to 4",
                    &ParseScale, outOptions.scale)
        .Type("FACTOR");
}

OptionGrammar AddInWindow(CommandGrammar inCommand, bool& outFlag)
{
    return inCommand.Flag("--ui", outFlag, "Show the progress in a window");
}

DialogCommands::DialogCommands(CommandGrammar inRoot)
{
    const CommandGrammar group = inRoot.Add("ui", "Show dialogs to test scripts instead of people");
    group.Footer("Dialogs are effects-manage, restart-prompt, progress and redirect. Without a display, "
                 "QT_QPA_PLATFORM=offscreen draws into memory.\n\nExamples:\n"
                 "  trhost ui dump restart-prompt\n"
                 "  trhost ui screenshot effects-manage manager.png --scale 2 --theme light\n"
                 "  trhost ui drive effects-manage search.ui");

    AddAttendance(group, "dump", "Print what a dialog is made of, as JSON", ui::Attendance::kDump);
    AddAttendance(group, "screenshot", "Write a dialog's picture", ui::Attendance::kScreenshot)
        .Option("file", mDialog.dialog.file, "File to write: .png; replaced if there")
        .Required()
        .Type("FILE");
    AddAttendance(group, "drive", "Use a dialog with a script of mouse and key events",
                  ui::Attendance::kScript)
        .Option("script", mDialog.dialog.file, "File with one event a line")
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
    command.Option("name", mDialog.name, "Dialog").Required().OneOf(kDialogNames).Type("NAME");
    command
        .Option("--plugins", mDialog.search.folders, "Look for plug-ins in this folder too; may be repeated")
        .Type("DIR")
        .Repeatable();
    command.Flag("--another-app", mDialog.changedInAnotherApp,
                 "The restart prompt after changes in another application");
    AddLook(command, mDialog.dialog);
    return command;
}

} // namespace trhost
