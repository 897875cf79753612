#include "DeviceStage.h"

#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace devicetests {

void FakeHardware::Open()
{
    if (const std::uint32_t refusal = mRefusal;
        refusal != 0) { // read once: a test may take it back meanwhile
        throw kiocore::kio_exception("the card refuses", refusal);
    }
    if (mIsOpen.exchange(true)) {
        throw kiocore::kio_exception("somebody has the card", kDevicesError_Busy);
    }
    ++mOpenCount;
}

void FakeHardware::Close()
{
    mIsClosing = true;
    mClosesSlowly.wait(true);
    mIsClosing = false;
    mIsOpen = false;
}

void FakeHardware::FinishClosing()
{
    mClosesSlowly = false;
    mClosesSlowly.notify_all();
}

int FakeHardware::Use(int inMostFrames)
{
    if (mBroken) {
        throw kiocore::kio_exception("the card was unplugged", kDevicesError_Lost);
    }
    const auto frames = int(std::min<std::int64_t>(inMostFrames, mAllowed));
    mAllowed -= frames;
    return frames;
}

class FakeHardware::FakeOutput : public IAudioOutput {
public:
    FakeOutput(FakeHardware& inHardware, const AudioFormat& inFormat)
        : mHardware(inHardware), mFormat(inFormat)
    {
        mHardware.Open();
    }
    ~FakeOutput() override { mHardware.Close(); }

    const AudioFormat& Format() const override { return mFormat; }
    int BufferFrames() const override { return 1 << 30; }
    int Write(const float* inSamples, int inFrames) override
    {
        const int frames = mHardware.Use(inFrames);
        const std::lock_guard lock(mHardware.mLock);
        mHardware.mTaken.insert(mHardware.mTaken.end(), inSamples,
                                inSamples + std::ptrdiff_t(frames) * mFormat.channels);
        return frames;
    }
    void Wait(int) override { std::this_thread::yield(); }
    bool Drain() override { return true; }
    int QueuedFrames() override { return mHardware.mQueued; }
    int Breaks() const override { return 0; }

private:
    FakeHardware& mHardware;
    const AudioFormat mFormat;
};

class FakeHardware::FakeInput : public IAudioInput {
public:
    FakeInput(FakeHardware& inHardware, const AudioFormat& inFormat)
        : mHardware(inHardware), mFormat(inFormat)
    {
        mHardware.Open();
    }
    ~FakeInput() override { mHardware.Close(); }

    const AudioFormat& Format() const override { return mFormat; }
    int BufferFrames() const override { return 4800; }
    int Read(float* outSamples, int inMostFrames) override
    {
        const int frames = mHardware.Use(inMostFrames);
        std::fill_n(outSamples, std::size_t(frames) * std::size_t(mFormat.channels), 0.5f);
        return frames;
    }
    void Wait(int) override { std::this_thread::yield(); }
    int Breaks() const override { return 0; }

private:
    FakeHardware& mHardware;
    const AudioFormat mFormat;
};

OutputOpener FakeHardware::Output()
{
    return [this](const AudioFormat& inFormat) { return std::make_unique<FakeOutput>(*this, inFormat); };
}

InputOpener FakeHardware::Input()
{
    return [this](const AudioFormat& inFormat) { return std::make_unique<FakeInput>(*this, inFormat); };
}

std::vector<float> FakeHardware::Taken() const
{
    const std::lock_guard lock(mLock);
    return mTaken;
}

DeviceStage::DeviceStage()
    : mDevices(std::make_unique<DeviceThread>(
          std::make_shared<DeviceTimeline>(kiocore::threads::GetRegisteredMainThread())))
{}

std::unique_ptr<Player> DeviceStage::MakePlayer(const char* inName, std::uint32_t inKey,
                                                FakeHardware& inHardware,
                                                std::unique_ptr<trhost::media::IAudioReader> inMedia)
{
    PlayerSettings settings;
    settings.name = inName;
    settings.key = inKey;
    settings.place = "card";
    settings.open = inHardware.Output();
    settings.media = std::move(inMedia);
    settings.pacing = Pacer::Mode::kNever;
    return std::make_unique<Player>(std::move(settings), *mDevices);
}

std::unique_ptr<Recorder> DeviceStage::MakeRecorder(const char* inName, std::uint32_t inKey,
                                                    FakeHardware& inHardware)
{
    RecorderSettings settings;
    settings.name = inName;
    settings.key = inKey;
    settings.place = "card";
    settings.open = inHardware.Input();
    settings.format = {48000, 1};
    return std::make_unique<Recorder>(std::move(settings), *mDevices);
}

void DeviceStage::Await(const char* inWhat, const std::function<bool()>& inCondition)
{
    // Some of what is awaited wakes nobody: asked again every few milliseconds.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!inCondition()) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << inWhat;
        mMain->RunUntil(inCondition, std::chrono::steady_clock::now() + std::chrono::milliseconds(5));
    }
}

void DeviceStage::AwaitIdle()
{
    Await("the device thread has run all requests", [this] { return mDevices->IsIdle(); });
}

void DeviceStage::Activate(DeviceRunner& inRunner)
{
    mDevices->Activate(inRunner.Proxy());
    AwaitIdle();
    Await("the hardware is open", [&] { return inRunner.IsSettled() && inRunner.IsOpen(); });
}

void DeviceStage::Collect()
{
    for (const DeviceEvent& event : mDevices->Timeline()->TakeNew()) {
        mEvents.push_back(event.device + " " + NameOf(event.kind));
    }
}

bool DeviceStage::Has(const std::string& inEvent)
{
    Collect();
    return std::find(mEvents.begin(), mEvents.end(), inEvent) != mEvents.end();
}

std::vector<std::string> DeviceStage::Order(const std::vector<std::string>& inEvents)
{
    Collect();
    std::vector<std::string> order;
    for (const std::string& event : mEvents) {
        if (std::find(inEvents.begin(), inEvents.end(), event) != inEvents.end()) {
            order.push_back(event);
        }
    }
    return order;
}

} // namespace devicetests
