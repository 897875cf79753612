#include "SpecimenPlugins.h"

#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace specimens {

using namespace trhost::effects;

namespace {

IFrameMemory* sMemory = nullptr;

/// A buffer that a plug-in sees.
class Buffer {
public:
    Buffer(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse) : mSource(sMemory), mBytes(inBytes)
    {
        mMemory = mSource ? mSource->Allocate(inBytes, inAlignment, inUse) : std::malloc(inBytes + 4096);
    }
    ~Buffer() { mSource ? mSource->Free(mMemory) : std::free(mMemory); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    volatile unsigned char* Bytes() const { return static_cast<volatile unsigned char*>(mMemory); }
    void* Memory() const { return mMemory; }
    std::size_t Size() const { return mBytes; }

private:
    IFrameMemory* const mSource;
    const std::size_t mBytes;
    void* mMemory;
};

/// Two instances that are in their calls at once meet here; one alone goes on after a while.
void Meet()
{
    static std::atomic<int> inside{0};
    ++inside;
    for (int patience = 0; inside < 2 && patience < 20'000; ++patience) {
        std::this_thread::yield();
    }
    for (int patience = 0; patience < 200; ++patience) {
        std::this_thread::yield(); // the other one has written, too
    }
    --inside;
}

void InvertThroughSharedState(const Buffer& inInput, const Buffer& inOutput)
{
    static std::atomic<unsigned char> sState[16];
    for (std::size_t i = 0; i < inInput.Size(); ++i) {
        inOutput.Bytes()[i] = static_cast<unsigned char>(~inInput.Bytes()[i]);
    }
    for (std::size_t i = 0; i < 16; ++i) {
        sState[i] = inInput.Bytes()[i];
    }
    Meet();
    for (std::size_t i = 0; i < 16; ++i) {
        inOutput.Bytes()[i] = sState[i];
    }
}

class VideoPlugin {
public:
    VideoPlugin(std::string inName, const VideoEffectForm& inForm) : mName(std::move(inName)), mForm(inForm)
    {}

    void Render(const Buffer& inInput, const Buffer& inOutput)
    {
        if (mName == "shared state") {
            InvertThroughSharedState(inInput, inOutput);
            return;
        }
        for (std::size_t i = 0; i < inInput.Size(); ++i) {
            inOutput.Bytes()[i] = static_cast<unsigned char>(~inInput.Bytes()[i]);
        }
        Misbehave(inInput, inOutput);
    }
    /// Of its buffers.
    std::size_t Alignment() const { return mName == "writes into gap" ? 64 : 4; }

private:
    void Misbehave(const Buffer& inInput, const Buffer& inOutput)
    {
        static std::atomic<unsigned char> sCalls{0};
        if (mName == "writes behind") {
            inOutput.Bytes()[inOutput.Size() + 4] = 1;
        } else if (mName == "writes before") {
            inOutput.Bytes()[std::ptrdiff_t(-8)] = 1;
        } else if (mName == "writes into gap") {
            inOutput.Bytes()[inOutput.Size()] = 1;
        } else if (mName == "reads behind") {
            inOutput.Bytes()[0] = inInput.Bytes()[inInput.Size()];
        } else if (mName == "writes input") {
            inInput.Bytes()[7] = static_cast<unsigned char>(inInput.Bytes()[7] + 1);
        } else if (mName == "varies") {
            inOutput.Bytes()[0] = ++sCalls;
        } else if (mName == "crashes at 719x487" && mForm.width == 719) {
            std::raise(SIGFPE);
        } else if (mName == "hangs at 320x240" && mForm.width == 320) {
            for (std::atomic<bool> forever{true}; forever;) {
            }
        } else if (mName == "throws") {
            throw std::runtime_error("out of cheese");
        }
    }

    const std::string mName;
    const VideoEffectForm mForm;
};

class VideoEffect final : public IVideoEffect {
public:
    VideoEffect(const std::string& inName, IPluginCalls& inCalls, TR::IFilterModuleRef inModule,
                const VideoEffectForm& inForm)
        : mPlugin(inName, inForm), mCalls(inCalls), mModule(std::move(inModule)), mForm(inForm),
          mInput(Bytes(), mPlugin.Alignment(), MemoryUse::kInput),
          mOutput(Bytes(), mPlugin.Alignment(), MemoryUse::kOutput)
    {}
    kiomediatypes::PixelFormat Format() const override { return kiomediatypes::kPixelFormat_BGRA_4444_8u; }
    int InputCount() const override { return 1; }
    void SetParameter(const std::string&, const std::string&) override {}
    MF::IVideoFrameRef Render(const std::vector<MF::IVideoFrameRef>& inInputs, kiomediatypes::TickTime,
                              double) override
    {
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> from(inInputs.at(0));
        for (std::size_t row = 0; row < mForm.height; ++row) {
            std::memcpy(static_cast<std::byte*>(mInput.Memory()) + row * RowBytes(),
                        from->GetPixels() + row * from->GetRowBytes(), RowBytes());
        }
        CallPlugin(mCalls, mModule, [&] { mPlugin.Render(mInput, mOutput); });
        MF::IVideoFrameRef result;
        VF::CreateVideoFrame(result, Format(), mForm.width, mForm.height, {1, 1}, false, false);
        result->InitializePixels(0);
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> to(result);
        for (std::size_t row = 0; row < mForm.height; ++row) {
            std::memcpy(to->GetWritablePixels() + row * to->GetRowBytes(),
                        static_cast<std::byte*>(mOutput.Memory()) + row * RowBytes(), RowBytes());
        }
        return result;
    }

private:
    std::size_t RowBytes() const { return std::size_t(mForm.width) * 4; }
    std::size_t Bytes() const { return RowBytes() * mForm.height; }

    VideoPlugin mPlugin;
    IPluginCalls& mCalls;
    const TR::IFilterModuleRef mModule;
    const VideoEffectForm mForm;
    const Buffer mInput;
    const Buffer mOutput;
};

class AudioEffect final : public IAudioEffect {
public:
    AudioEffect(std::string inName, IPluginCalls& inCalls, TR::IFilterModuleRef inModule, int inChannels)
        : mName(std::move(inName)), mCalls(inCalls), mModule(std::move(inModule)), mChannels(inChannels)
    {}
    void SetParameter(const std::string&, const std::string&) override {}
    void Process(const float* inSamples, float* outSamples, int inFrames) override
    {
        const std::size_t count = static_cast<std::size_t>(inFrames) * static_cast<std::size_t>(mChannels);
        const Buffer output(count * sizeof(float), sizeof(float), MemoryUse::kOutput);
        CallPlugin(mCalls, mModule, [&] {
            auto* const samples = static_cast<volatile float*>(output.Memory());
            for (std::size_t i = 0; i < count; ++i) {
                samples[i] = inSamples[i] / 2;
            }
            if (mName == "sound infinite") {
                samples[count - 1] = std::numeric_limits<float>::infinity();
            } else if (mName == "sound writes behind") {
                samples[count] = 0;
            }
        });
        std::memcpy(outSamples, output.Memory(), output.Size());
    }

private:
    const std::string mName;
    IPluginCalls& mCalls;
    const TR::IFilterModuleRef mModule;
    const int mChannels;
};

} // namespace

void SetMemory(IFrameMemory* inMemory)
{
    sMemory = inMemory;
}

std::unique_ptr<IVideoEffect> OpenVideo(const std::string& inName, IPluginCalls& inCalls,
                                        const TR::IFilterModuleRef& inModule, const VideoEffectForm& inForm)
{
    if (inName == "even sizes only" && inForm.width % 2 != 0) {
        throw kiocore::kio_exception("specimen takes even sizes only", kEffectError_BadFrame);
    }
    return std::make_unique<VideoEffect>(inName, inCalls, inModule, inForm);
}

std::unique_ptr<IAudioEffect> OpenAudio(const std::string& inName, IPluginCalls& inCalls,
                                        const TR::IFilterModuleRef& inModule, int inChannels)
{
    return std::make_unique<AudioEffect>(inName, inCalls, inModule, inChannels);
}

} // namespace specimens
