#include "CommandGroups.h"

namespace trhost {

AssetCommands::AssetCommands(CommandGrammar inRoot)
{
    const CommandGrammar assets = inRoot.Add(
        "assets",
        "$$$/Halcyon/TrHost/Help/Assets=Convert lists of assets and apply their points to a project");
    assets
        .Add("to-paths",
             "$$$/Halcyon/TrHost/Help/Assets/ToPaths=Read specifiers on standard input, print their paths",
             &AssetsToPaths)
        .Footer(Examples({{"trhost assets from-project film.hproj | trhost assets to-paths"}}));
    assets
        .Add("from-paths",
             "$$$/Halcyon/TrHost/Help/Assets/FromPaths=Read paths on standard input, print specifiers "
             "without points",
             &AssetsFromPaths)
        .Footer(Examples({{"echo '[\"/footage/a.mov\"]' | trhost assets from-paths"}}));

    const CommandGrammar fromProject = assets.Add(
        "from-project", "$$$/Halcyon/TrHost/Help/Assets/FromProject=Print specifiers of a project's clips",
        [this](Context& ioContext) { return AssetsFromProject(ioContext, mProject); });
    fromProject.Option("file", mProject, "$$$/Halcyon/TrHost/Help/ProjectFile=Project file (.hproj)")
        .Required()
        .Type("FILE");
    fromProject.Footer(Examples({{"trhost assets from-project film.hproj > points.json"}}));

    const CommandGrammar apply =
        assets.Add("apply",
                   "$$$/Halcyon/TrHost/Help/Assets/Apply=Read specifiers on standard input, set the points "
                   "of a project's clips",
                   [this](Context& ioContext) { return AssetsApply(ioContext, mApply); });
    apply.Option("--project", mApply.project, "$$$/Halcyon/TrHost/Help/ProjectFile=Project file (.hproj)")
        .Required()
        .Type("FILE");
    apply
        .Option("-o,--output", mApply.output,
                "$$$/Halcyon/TrHost/Help/Assets/Apply/Output=Save the project here (default: where it was)")
        .Type("FILE");
    AddDryRun(apply, mApply.dryRun);
    apply.Footer(
        Shown("$$$/Halcyon/TrHost/Help/Assets/Apply/Points=A point that a specifier does not name is taken "
              "away. "
              "Times are ticks, 254016000000 a second.") +
        "\n\n" +
        Examples({{"echo '[{\"Path\":\"/footage/a.mov\",\"InPoint\":0,\"OutPoint\":508032000000}]' |\n"
                   "      trhost assets apply --project film.hproj --dry-run"}}));

    const CommandGrammar newProject = assets.Add(
        "new-project",
        "$$$/Halcyon/TrHost/Help/Assets/NewProject=Make a project of media files; folders become bins",
        [this](Context& ioContext) { return AssetsNewProject(ioContext, mNewProject); });
    newProject
        .Option("file", mNewProject.project,
                "$$$/Halcyon/TrHost/Help/Assets/NewProject/File=Project file (.hproj) to make")
        .Required()
        .Type("FILE");
    newProject
        .Option("media", mNewProject.media,
                "$$$/Halcyon/TrHost/Help/MediaPaths=Media files, or folders to look for media in")
        .Required()
        .Type("MEDIA");
    newProject.Flag("--force", mNewProject.force,
                    "$$$/Halcyon/TrHost/Help/ReplaceFile=Replace a file that is there");
    newProject.Footer(Examples({{"trhost assets new-project film.hproj ~/Footage ~/Music/theme.wav"}}));
}

} // namespace trhost
