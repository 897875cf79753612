#include "Frei0rEffect.h"

#include "../PluginParameters.h"
#include "ParameterValues.h"
#include "support/KeptText.h"

#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>

#include <algorithm>
#include <array>
#include <utility>

namespace trhost::effects::frei0r {
namespace {

using kiomediatypes::kPixelFormat_Any;
using kiomediatypes::kPixelFormat_BGRA_4444_8u;

std::string SizeText(std::uint32_t inWidth, std::uint32_t inHeight)
{
    return std::to_string(inWidth) + " x " + std::to_string(inHeight);
}

VideoEffectForm Checked(const VideoEffectForm& inForm, const std::string& inMatchName)
{
    const auto refuse = [&](const std::string& inReason) {
        throw kiocore::kio_exception(inReason, kEffectError_BadFrame);
    };
    if (inForm.format != kPixelFormat_Any && inForm.format != kPixelFormat_BGRA_4444_8u) {
        refuse(KeptText(
            "$$$/Halcyon/TrHost/Effects/NotOnFormat=@0 cannot run on pictures of format @1; expected @2",
            {inMatchName, kiomediatypes::NameOf(inForm.format), "bgra8"}));
    }
    // Also what no memory can hold is refused here, before any is asked for.
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, inForm.width, inForm.height,
                              kiomediatypes::kPixelAspectRatio_Square, false, false)) {
        refuse(KeptText("$$$/Halcyon/TrHost/Effects/NotOnSize=@0 cannot run on pictures of @1 pixels; "
                        "expected 1 to 65535 each way, and what fits into memory#{@1: 640 x 480}",
                        {inMatchName, SizeText(inForm.width, inForm.height)}));
    }
    return inForm;
}

std::optional<int> FaderOf(const PluginInfo& inInfo)
{
    // Mixers name it as they like; these are the names that mean the second picture's part.
    static constexpr std::array<std::string_view, 4> kNames{"fader", "blend", "opacity", "mix"};
    if (inInfo.type != F0R_PLUGIN_TYPE_MIXER2) {
        return std::nullopt;
    }
    for (const Parameter& parameter : inInfo.parameters) {
        if (parameter.type == F0R_PARAM_DOUBLE &&
            std::find(kNames.begin(), kNames.end(), parameter.shown.name) != kNames.end()) {
            return parameter.index;
        }
    }
    return std::nullopt;
}

std::vector<PictureBuffer> MakeBuffers(int inCount, const VideoEffectForm& inForm)
{
    std::vector<PictureBuffer> buffers;
    buffers.reserve(static_cast<std::size_t>(inCount));
    for (int i = 0; i < inCount; ++i) {
        buffers.emplace_back(inForm.width, inForm.height, MemoryUse::kInput, inForm.isExact);
    }
    return buffers;
}

} // namespace

std::optional<int> InputCountOf(int inPluginType)
{
    switch (inPluginType) {
    case F0R_PLUGIN_TYPE_SOURCE:
        return 0;
    case F0R_PLUGIN_TYPE_FILTER:
        return 1;
    case F0R_PLUGIN_TYPE_MIXER2:
        return 2;
    case F0R_PLUGIN_TYPE_MIXER3:
        return 3;
    default:
        return std::nullopt;
    }
}

Frei0rEffect::Frei0rEffect(PluginUseRef inUse, PluginCaller inCaller, std::string inMatchName,
                           const VideoEffectForm& inForm)
    : mUse(std::move(inUse)), mCaller(std::move(inCaller)), mMatchName(std::move(inMatchName)),
      mWidth(Checked(inForm, mMatchName).width), mHeight(inForm.height),
      mInputCount(InputCountOf(mUse->Info().type).value_or(0)),
      mExchange(mUse->Info().colorModel == F0R_COLOR_MODEL_RGBA8888),
      mInputs(MakeBuffers(mInputCount, inForm)), mOutput(mWidth, mHeight, MemoryUse::kOutput, inForm.isExact),
      mFader(FaderOf(mUse->Info())),
      mInstance(mUse->File(), mCaller, mMatchName, mOutput.PaddedWidth(), mOutput.PaddedHeight())
{}

void Frei0rEffect::SetParameter(const std::string& inName, const std::string& inValue)
{
    std::vector<std::string> names;
    for (const Parameter& parameter : mUse->Info().parameters) {
        if (parameter.shown.name == inName) {
            frei0r::SetParameter(mUse->File(), mCaller, mInstance.Get(), mMatchName, parameter, inValue);
            if (mFader == parameter.index) {
                mFader.reset();
            }
            return;
        }
        names.push_back(parameter.shown.name);
    }
    ThrowNoSuchParameter(mMatchName, inName, names);
}

MF::IVideoFrameRef Frei0rEffect::Render(const std::vector<MF::IVideoFrameRef>& inInputs,
                                        kiomediatypes::TickTime inTime, double inPosition)
{
    TakeInputs(inInputs);
    PrepareOutput();
    if (mFader) {
        SetNumber(mUse->File(), mCaller, mInstance.Get(), *mFader, inPosition);
    }
    Update(inTime.Seconds());
    CheckStrips();
    return GiveOutput(inInputs);
}

void Frei0rEffect::TakeInputs(const std::vector<MF::IVideoFrameRef>& inInputs)
{
    if (inInputs.size() != mInputs.size()) {
        ThrowBadFrame(
            KeptText("$$$/Halcyon/TrHost/Effects/InputCount=@0 was given @1 pictures; expected @2",
                     {mMatchName, std::to_string(inInputs.size()), std::to_string(mInputs.size())}));
    }
    for (std::size_t i = 0; i < inInputs.size(); ++i) {
        const MF::IVideoFrameRef& frame = inInputs[i];
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
        if (!memory || !memory->GetPixels()) {
            ThrowBadFrame(KeptText("$$$/Halcyon/TrHost/Effects/NoPixels=@0 was given a frame without pixels",
                                   {mMatchName}));
        }
        if (frame->GetWidth() != mWidth || frame->GetHeight() != mHeight ||
            frame->GetPixelFormat() != Format()) {
            ThrowBadFrame(KeptText("$$$/Halcyon/TrHost/Effects/InputForm=@0 was given a picture of @1 pixels "
                                   "of format @2; expected @3 of @4#{@1 and @3: 640 x 480}",
                                   {mMatchName, SizeText(frame->GetWidth(), frame->GetHeight()),
                                    kiomediatypes::NameOf(frame->GetPixelFormat()), SizeText(mWidth, mHeight),
                                    "bgra8"}));
        }
        // A copy of its own: plug-ins write into what they are given.
        mInputs[i].CopyFrom(memory->GetPixels(), memory->GetRowBytes(), mExchange);
    }
}

void Frei0rEffect::PrepareOutput()
{
    if (mInputs.empty()) {
        mOutput.FillWithBlack();
    } else {
        mOutput.CopyFrom(mInputs[0]);
    }
}

void Frei0rEffect::Update(double inSeconds)
{
    const Functions& functions = mUse->File().Calls();
    const std::uint32_t* const first = mInputs.empty() ? nullptr : mInputs[0].Pixels();
    const std::uint32_t* const second = mInputs.size() < 2 ? nullptr : mInputs[1].Pixels();
    const auto update = [&] {
        if (functions.update2 && (second || !functions.update)) {
            functions.update2(mInstance.Get(), inSeconds, first, second, nullptr, mOutput.Pixels());
        } else {
            functions.update(mInstance.Get(), inSeconds, first, mOutput.Pixels());
        }
    };
    if (mUse->File().KeepsGlobalState()) {
        kiocore::threads::ScLock lock(mUse->File().Lock());
        mCaller(update);
    } else {
        mCaller(update);
    }
}

void Frei0rEffect::CheckStrips() const
{
    if (!mOutput.IsIntact() || !std::all_of(mInputs.begin(), mInputs.end(), [](const PictureBuffer& inInput) {
            return inInput.IsIntact();
        })) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/WroteOutside=@0 wrote outside of its picture of @1 "
                     "pixels#{@1: 640 x 480}",
                     {mMatchName, SizeText(mOutput.PaddedWidth(), mOutput.PaddedHeight())}),
            kEffectError_PluginFailed);
    }
}

MF::IVideoFrameRef Frei0rEffect::GiveOutput(const std::vector<MF::IVideoFrameRef>& inInputs) const
{
    MF::IVideoFrameRef frame;
    const bool made =
        inInputs.empty()
            ? VF::CreateVideoFrame(frame, Format(), mWidth, mHeight, kiomediatypes::kPixelAspectRatio_Square,
                                   false, false)
            : VF::CreateVideoFrame(frame, Format(), mWidth, mHeight, inInputs[0]->GetPixelAspectRatio(),
                                   inInputs[0]->GetColorSpace(), false, false);
    if (!made || !frame->InitializePixels(0)) {
        ThrowBadFrame(KeptText("$$$/Halcyon/TrHost/Effects/NoMemory=@0 finds no memory for a picture of @1 "
                               "pixels#{@1: 640 x 480}",
                               {mMatchName, SizeText(mWidth, mHeight)}));
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
    mOutput.CopyTo(memory->GetWritablePixels(), memory->GetRowBytes(), mExchange);
    return frame;
}

void Frei0rEffect::ThrowBadFrame(const std::string& inReason) const
{
    throw kiocore::kio_exception(inReason, kEffectError_BadFrame);
}

} // namespace trhost::effects::frei0r
