#include "CommandGroups.h"

#include "../../support/PictureQuantities.h"

namespace trhost {

CompareCommands::CompareCommands(CommandGrammar inRoot)
{
    const CommandGrammar compare =
        inRoot.Add("compare", "$$$/Halcyon/TrHost/Help/Compare=Compare two pictures, or two folders of them",
                   [this](Context& ioContext) { return Compare(ioContext, mCompare); });
    compare
        .Option("first", mCompare.a,
                "$$$/Halcyon/TrHost/Help/Compare/First=PNG or raw frame file, or a folder of them")
        .Required()
        .Type("A");
    compare
        .Option("second", mCompare.b,
                "$$$/Halcyon/TrHost/Help/Compare/Second=The same: files of one name are compared")
        .Required()
        .Type("B");
    compare
        .Option(
            "--diff", mCompare.difference,
            "$$$/Halcyon/TrHost/Help/Compare/Diff=Paint what differs into this PNG, or a PNG of each pair "
            "that differs into this folder")
        .Type("PATH");
    compare
        .ParsedInto(
            "--tolerance",
            "$$$/Halcyon/TrHost/Help/Compare/Tolerance=Let channels differ by as much, of full scale: "
            "0.01, 1%, 2/255 (default: 0)",
            "$$$/Halcyon/TrHost/Help/Expected/Tolerance=a part of full scale from 0 to 1, such as "
            "0.01, 1% or 2/255",
            &ParseTolerance, mCompare.tolerance)
        .Type("T");
    compare
        .Option(
            "--report", mCompare.report,
            "$$$/Halcyon/TrHost/Help/Compare/Report=Write a page that shows the pictures into this folder")
        .Type("DIR");
    compare
        .Option("-j,--jobs", mCompare.jobs,
                "$$$/Halcyon/TrHost/Help/Compare/Jobs=Pairs to work on at a time (default: one a processor)")
        .Range(1, 1024)
        .Type("N");
    compare.Footer(
        Examples({
            {"trhost compare expected.png made.png"},
            {"trhost compare a.png b.raw --diff difference.png --tolerance 2/255"},
            {"trhost compare expected/ made/ --report report/",
             "$$$/Halcyon/TrHost/Help/Examples/CompareReport=look at report/index.html"},
            {"trhost --json compare expected/ made/"},
        }) +
        "\n\n" +
        Shown(
            "$$$/Halcyon/TrHost/Help/Compare/ExitStatus=Exit status: 0 the same, 1 different, 2 wrong usage, "
            "3 could not compare (also when sizes differ)."));
    AddRaw(inRoot);
}

void CompareCommands::AddRaw(CommandGrammar inRoot)
{
    const CommandGrammar raw =
        inRoot.Add("raw", "$$$/Halcyon/TrHost/Help/Raw=Write raw frame files, or look at their headers");
    const CommandGrammar write =
        raw.Add("write", "$$$/Halcyon/TrHost/Help/Raw/Write=Write a picture as a raw frame file",
                [this](Context& ioContext) { return RawWrite(ioContext, mRawWrite); });
    write.Option("source", mRawWrite.source, "$$$/Halcyon/TrHost/Help/Raw/Source=PNG, raw frame file or clip")
        .Required()
        .Type("SOURCE");
    write
        .Option("-o,--output", mRawWrite.form.output,
                "$$$/Halcyon/TrHost/Help/Raw/Output=File to write; replaced if there")
        .Required()
        .Type("FILE");
    write
        .ParsedInto(
            "--at",
            "$$$/Halcyon/TrHost/Help/Raw/At=Of a clip, time from the start: 1.5s, 1500ms, 00:00:01.5, "
            "or frame: 36f (default: 0s)",
            "$$$/Halcyon/TrHost/Help/Expected/FrameAt=a time such as 1.5s, 1500ms, 00:00:01.5, or a "
            "frame such as 36f",
            &ParseMediaTime, mRawWrite.at)
        .Type("TIME");
    write
        .Option("--stream", mRawWrite.stream,
                "$$$/Halcyon/TrHost/Help/Frame/Stream=Number of the video stream (default: the first)")
        .Range(0, 1 << 30)
        .Type("N");
    AddPictureForm(write, mRawWrite.form,
                   "$$$/Halcyon/TrHost/Help/Frame/Size=Scale to this size (default: the picture's own)");
    write.Footer(Examples({{"trhost raw write clip.mov --at 36f -o frame.raw"},
                           {"trhost raw write picture.png --format bgra16 -o picture.raw"}}));
    const CommandGrammar info = raw.Add(
        "info",
        "$$$/Halcyon/TrHost/Help/Raw/Info=Print what headers of raw frame files say; 1 when one is not valid",
        [this](Context& ioContext) { return RawInfo(ioContext, mRawFiles); });
    info.Option("file", mRawFiles, "$$$/Halcyon/TrHost/Help/Raw/File=Raw frame files")
        .Required()
        .Type("FILE");
    info.Footer(Examples({{"trhost raw info frame.raw"}, {"trhost --json raw info *.raw"}}));
}

} // namespace trhost
