// Effects at work on pictures.
#include "../EffectOptions.h"

#include "../../support/Failure.h"
#include "../../support/FrameOutput.h"
#include "../../support/Interrupt.h"
#include "Pictures.h"
#include "RunSound.h"

#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <optional>
#include <system_error>

namespace trhost {

namespace {

using namespace kiomediatypes;
using effects::EffectDescription;
using effects::EffectKind;
using kiocore::utility::ToUTF16;

constexpr PictureSize kUsualSize = {1920, 1080};
/// How many pictures an effect may swallow before it gives its first.
constexpr int kMostSwallowed = 64;

FrameOutput OutputFor(const std::string& inPath)
{
    FrameForm form;
    form.output = inPath;
    return FrameOutput(form);
}

void WritePicture(const MF::IVideoFrameRef& inPicture, const FrameOutput& inOutput)
{
    const bool isPNG =
        inOutput.Path().size() > 4 && inOutput.Path().substr(inOutput.Path().size() - 4) != u".raw";
    // A PNG takes every format, and keeps 16 bits of a deep one.
    inOutput.Write(isPNG ? inPicture
                         : inOutput.Shaped(inPicture, {inPicture->GetWidth(), inPicture->GetHeight()},
                                           inOutput.FormatFor(inPicture->GetPixelFormat()),
                                           inPicture->GetPixelAspectRatio()));
}

void ThrowIfSameFile(const std::string& inInput, const std::string& inOutput)
{
    std::error_code error;
    if (std::filesystem::equivalent(inInput, inOutput, error)) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/OutputIsInput=the output @0 is the input itself; expected another "
                 "file",
                 {kiocore::filesupport::FromNative(inOutput)}));
    }
}

/// The files of a run as what they are for.
struct RunFiles {
    std::string input; // empty for a generator
    std::string output;
};

RunFiles FilesOf(const EffectDescription& inEffect, const EffectsRunOptions& inOptions)
{
    const std::size_t expected = inEffect.kind == EffectKind::kGenerator ? 1 : 2;
    if (inEffect.kind == EffectKind::kTransition) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/IsTransition=@0 is a transition; see trhost effects "
                           "transition --help",
                           {ToUTF16(inEffect.matchName)}));
    }
    if (inOptions.files.size() != expected) {
        throw Failure(
            kExit_Usage,
            expected == 1
                ? Text("$$$/Halcyon/TrHost/GeneratorFiles=@0 is a generator: found @1 files, expected one, "
                       "the output",
                       {ToUTF16(inEffect.matchName), ToUTF16(std::to_string(inOptions.files.size()))})
                : Text("$$$/Halcyon/TrHost/FilterFiles=found @0 files, expected two, input and output",
                       {ToUTF16(std::to_string(inOptions.files.size()))}));
    }
    if (expected == 1) {
        return {"", inOptions.files[0]};
    }
    ThrowIfSameFile(inOptions.files[0], inOptions.files[1]);
    return {inOptions.files[0], inOptions.files[1]};
}

/// One effect making pictures, for as long as it is asked for more.
class PictureRun {
public:
    PictureRun(const EffectDescription& inEffect, const EffectsRunOptions& inOptions,
               const std::string& inInput)
    {
        effects::VideoEffectForm form;
        form.format = inOptions.format;
        const PictureSize size = inOptions.size.value_or(kUsualSize);
        form.width = size.width;
        form.height = size.height;
        if (!inInput.empty()) {
            mSource.emplace(inInput);
            const MF::IVideoFrameRef first = mSource->Picture(0);
            form.width = first->GetWidth();
            form.height = first->GetHeight();
            form.framesPerSecond = mSource->FramesPerSecond();
            if (form.format == kPixelFormat_Any) {
                form.format = BestFormatFor(first, inEffect.formats);
            }
        }
        mForm = form;
        mEffect = OpenVideoEffect(inEffect, form, inOptions.parameters);
    }

    /// @return empty when the effect wants more pictures first.
    MF::IVideoFrameRef Next()
    {
        ThrowIfInterrupted();
        std::vector<MF::IVideoFrameRef> inputs;
        if (mSource) {
            inputs.push_back(
                ConvertPicture(mSource->Picture(mNumber), mEffect->Format(), mForm.width, mForm.height));
        }
        const TickTime time = TickTime::FromSeconds(mNumber / mForm.framesPerSecond);
        ++mNumber;
        return mEffect->Render(inputs, time, 0);
    }

private:
    std::optional<PictureSource> mSource;
    effects::VideoEffectForm mForm;
    std::unique_ptr<effects::IVideoEffect> mEffect;
    int mNumber = 0;
};

void NotePicture(Context& ioContext, const EffectDescription& inEffect, const MF::IVideoFrameRef& inPicture,
                 const FrameOutput& inOutput)
{
    JsonLine object;
    object.Add("matchName", inEffect.matchName).Add("output", inOutput.Path());
    AddFrame(object, inPicture);
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/EffectMade=@0: @1, by @2",
                               {inOutput.Path(), DescribeFrame(inPicture), ToUTF16(inEffect.matchName)}),
                          object);
}

int RunOnPictures(Context& ioContext, const EffectDescription& inEffect, const EffectsRunOptions& inOptions,
                  const RunFiles& inFiles)
{
    const FrameOutput check = OutputFor(NumberedName(inFiles.output, 1)); // before anything costs time
    PictureRun run(inEffect, inOptions, inFiles.input);
    MF::IVideoFrameRef last;
    int made = 0;
    for (int given = 0; made < inOptions.frames && given < inOptions.frames + kMostSwallowed; ++given) {
        const MF::IVideoFrameRef picture = run.Next();
        if (!picture) {
            continue;
        }
        last = picture;
        ++made;
        if (HasNumber(inFiles.output)) {
            const FrameOutput output = OutputFor(NumberedName(inFiles.output, made));
            WritePicture(picture, output);
            NotePicture(ioContext, inEffect, picture, output);
        }
    }
    if (!last) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/EffectGaveNothing=@0 was given @1 pictures and gave none",
                 {ToUTF16(inEffect.matchName), ToUTF16(std::to_string(inOptions.frames + kMostSwallowed))}));
    }
    if (!HasNumber(inFiles.output)) {
        WritePicture(last, check);
        NotePicture(ioContext, inEffect, last, check);
    }
    return kExit_Done;
}

} // namespace

int EffectsRun(Context& ioContext, const EffectSearch& inSearch, const EffectsRunOptions& inOptions)
{
    const EffectHost host(ioContext, inSearch);
    const EffectDescription& effect = host.FindRunnable(inOptions.name).description;
    const RunFiles files = FilesOf(effect, inOptions);
    if (effect.kind == EffectKind::kAudioFilter) {
        return RunOnSound(ioContext, effect, inOptions, files.input, files.output);
    }
    return RunOnPictures(ioContext, effect, inOptions, files);
}

int EffectsTransition(Context& ioContext, const EffectSearch& inSearch,
                      const EffectsTransitionOptions& inOptions)
{
    const EffectHost host(ioContext, inSearch);
    const EffectDescription& effect = host.FindRunnable(inOptions.name).description;
    if (effect.kind != EffectKind::kTransition) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/IsNoTransition=@0 is a @1; expected a transition",
                           {ToUTF16(effect.matchName), Text(TextOf(effect.kind))}));
    }
    ThrowIfSameFile(inOptions.from, inOptions.output);
    ThrowIfSameFile(inOptions.to, inOptions.output);
    const FrameOutput output = OutputFor(inOptions.output);
    const MF::IVideoFrameRef from = PictureSource(inOptions.from).Picture(0);
    const MF::IVideoFrameRef to = PictureSource(inOptions.to).Picture(0);

    effects::VideoEffectForm form;
    form.width = from->GetWidth();
    form.height = from->GetHeight();
    form.format = BestFormatFor(from, effect.formats);
    const auto transition = OpenVideoEffect(effect, form, inOptions.parameters);
    // The second picture takes the size of the first, as on a timeline.
    const MF::IVideoFrameRef picture =
        transition->Render({ConvertPicture(from, transition->Format(), form.width, form.height),
                            ConvertPicture(to, transition->Format(), form.width, form.height)},
                           TickTime::Zero(), inOptions.at.value_or(0.5));
    if (!picture) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/TransitionGaveNothing=@0 gave no picture",
                                         {ToUTF16(effect.matchName)}));
    }
    WritePicture(picture, output);
    NotePicture(ioContext, effect, picture, output);
    return kExit_Done;
}

} // namespace trhost
