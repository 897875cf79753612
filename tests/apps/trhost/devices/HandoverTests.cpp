// How real players and recorders hand the slot over: what they do to their hardware, and in which order.

#include "DeviceStage.h"

#include <devices/WaveFile.h>
#include <support/HandWoundClock.h>
#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <numeric>
#include <thread>

using namespace devicetests;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

/// So many frames, each of which says its number.
class NumberedSound : public trhost::media::IAudioReader {
public:
    explicit NumberedSound(std::int64_t inFrames) : mFrames(inFrames)
    {
        mInfo.sampleRate = 48000;
        mInfo.channels = 1;
    }
    const trhost::media::StreamInfo& Stream() const override { return mInfo; }
    void SeekTo(std::int64_t inFrame, const trhost::media::ICancel&) override { mAt = inFrame; }
    int Read(float* outSamples, int inMostFrames, const trhost::media::ICancel&) override
    {
        const int frames = int(std::min<std::int64_t>(inMostFrames, mFrames - mAt));
        std::iota(outSamples, outSamples + frames, float(mAt));
        mAt += frames;
        return frames;
    }

private:
    trhost::media::StreamInfo mInfo;
    const std::int64_t mFrames;
    std::int64_t mAt = 0;
};

} // namespace

TEST(Handover, TheHardwareIsFreeBeforeTheNextOneHoldsTheSlot)
{
    DeviceStage stage;
    FakeHardware card; // one for both: it could not be opened twice
    const auto player = stage.MakePlayer("player1", 1, card);
    const auto recorder = stage.MakeRecorder("recorder1", 2, card);
    stage.Activate(player->Runner());
    recorder->Record({}, -1);
    stage.Activate(recorder->Runner());
    EXPECT_EQ(stage.Devices().Holder(), "recorder1");
    EXPECT_FALSE(player->Runner().IsOpen());
    EXPECT_THAT(stage.Order({"player1 opened", "player1 askedToLetGo", "player1 closed", "player1 letGo",
                             "recorder1 asks", "recorder1 active"}),
                ElementsAre("player1 opened", "recorder1 asks", "player1 askedToLetGo", "player1 closed",
                            "player1 letGo", "recorder1 active"));
}

TEST(Handover, TheGateOpensOnlyOnceTheHardwareIsClosed)
{
    for (const bool dies : {false, true}) {
        SCOPED_TRACE(dies ? "dying" : "asked to");
        DeviceStage stage;
        FakeHardware card;
        auto player = stage.MakePlayer("player1", 1, card);
        const DeviceProxyRef proxy = player->Runner().Proxy();
        stage.Activate(player->Runner());
        card.CloseSlowly();
        player->Runner().SetHolding(dies);
        auto gate = std::make_shared<kiocore::threads::Gate>(false);
        proxy->Preempt({}, gate);
        std::thread death;
        if (dies) {
            death = std::thread([&] { player.reset(); });
        }
        stage.Await("the card is being closed", [&] { return card.IsClosing(); });
        EXPECT_FALSE(gate->IsOpen());
        card.FinishClosing();
        gate->PassThrough();
        EXPECT_FALSE(card.IsOpen());
        if (dies) {
            death.join();
        }
    }
}

TEST(Handover, AfterTwoSecondsTheUserIsToldForWhom)
{
    support::HandWoundClock clock;
    DeviceStage stage;
    FakeHardware cards[2];
    const auto player = stage.MakePlayer("player1", 1, cards[0]);
    const auto recorder = stage.MakeRecorder("recorder1", 2, cards[1]);
    stage.Activate(player->Runner());
    player->Runner().SetHolding(true);
    stage.Devices().Activate(recorder->Runner().Proxy());
    stage.Await("the player holds on", [&] { return stage.Has("player1 holdsOn"); });

    clock.Advance(1999ms);
    EXPECT_FALSE(stage.Devices().TakeLongWait());
    clock.Advance(1ms);
    const auto waiting = stage.Devices().TakeLongWait();
    ASSERT_TRUE(waiting);
    EXPECT_EQ(waiting->device, "recorder1");
    EXPECT_EQ(waiting->other, "player1");
    clock.Advance(1h);
    EXPECT_FALSE(stage.Devices().TakeLongWait()) << "told twice";
    EXPECT_TRUE(player->Runner().IsOpen());
    EXPECT_EQ(stage.Devices().Holder(), "player1");

    DeviceEvent event;
    event.kind = DeviceEvent::Kind::kWaits;
    event.other = waiting->other;
    EXPECT_EQ(Describe(event), u"waiting for player1 to let go of the audio device");

    // A request that comes meanwhile is run after the one that waits.
    stage.Devices().Deactivate(recorder->Runner().Proxy());
    player->Runner().SetHolding(false);
    stage.AwaitIdle();
    EXPECT_FALSE(stage.Devices().WaitsFor());
    EXPECT_THAT(stage.Order({"player1 letGo", "recorder1 active", "recorder1 deactivated"}),
                ElementsAre("player1 letGo", "recorder1 active", "recorder1 deactivated"));
}

TEST(Handover, ADeviceThatDiesLeavesNobodyWaiting)
{
    for (const bool holdsOn : {false, true}) {
        SCOPED_TRACE(holdsOn ? "told to hold on" : "");
        DeviceStage stage;
        FakeHardware card;
        auto player = stage.MakePlayer("player1", 1, card);
        const auto recorder = stage.MakeRecorder("recorder1", 2, card);
        stage.Activate(player->Runner());
        player->Runner().SetHolding(holdsOn);
        stage.Devices().Activate(recorder->Runner().Proxy());
        if (holdsOn) {
            stage.Await("the player holds on", [&] { return stage.Has("player1 holdsOn"); });
        }
        player.reset();
        stage.AwaitIdle();
        EXPECT_EQ(stage.Devices().Holder(), "recorder1");
        stage.Await("the recorder has the card", [&] { return recorder->Runner().IsOpen(); });
    }
}

TEST(Handover, TheProxyOpensItsGateWhateverHappensToTheDevice)
{
    DeviceStage stage;
    FakeHardware card;
    auto player = stage.MakePlayer("player1", 1, card);
    DeviceProxyRef proxy = player->Runner().Proxy();
    player.reset();
    auto late = std::make_shared<kiocore::threads::Gate>(false);
    proxy->Preempt({}, late); // the manager may hold it for longer than the device lives
    EXPECT_TRUE(late->IsOpen());

    // Nobody looks at these orders, as if the device were stuck.
    const auto orders = std::make_shared<DeviceOrders>();
    auto stuck =
        kiocore::classref::MakeObject<DeviceProxy>("stuck", 5u, 1u, orders, stage.Devices().Timeline());
    auto gate = std::make_shared<kiocore::threads::Gate>(false);
    stuck->Preempt({}, gate);
    EXPECT_FALSE(gate->IsOpen());
    stuck.Reset();
    EXPECT_TRUE(gate->IsOpen());
}

TEST(Handover, WhoIsAskedFollowsPrioritiesAndWhoWaitsFollowsKeys)
{
    const struct {
        const char* name;
        bool holderRecords;
        bool newcomerRecords;
        std::uint32_t holderKey;
        std::uint32_t newcomerKey;
        bool isAsked;
        bool waits; // so that the newcomer cannot hold the slot before the holder has let go
    } kCases[] = {
        {"a recording replaces what plays", false, true, 1, 2, true, true},
        {"equal priorities: the newcomer gets it", false, false, 1, 2, true, true},
        {"one recording asks another", true, true, 1, 2, true, true},
        {"a recording is not asked by what plays", true, false, 1, 2, false, false},
        {"equal keys do not wait", false, true, 7, 7, true, false},
        {"nobody waits for key 0", false, true, 0, 2, true, false},
        {"key 0 waits like any other", false, true, 1, 0, true, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        DeviceStage stage;
        FakeHardware cards[2];
        const auto holder = stage.MakeRecorder("holder", test.holderKey, cards[0]);
        const auto newcomer = stage.MakeRecorder("newcomer", test.newcomerKey, cards[1]);
        if (test.holderRecords) {
            holder->Record({}, -1);
        }
        stage.Activate(holder->Runner());
        holder->Runner().SetHolding(true);
        if (test.newcomerRecords) {
            newcomer->Record({}, -1);
        }
        stage.Devices().Activate(newcomer->Runner().Proxy());
        if (test.waits) {
            stage.Await("the holder holds on", [&] { return stage.Has("holder holdsOn"); });
            EXPECT_TRUE(stage.Devices().WaitsFor());
            EXPECT_EQ(stage.Devices().Holder(), "holder");
            EXPECT_FALSE(newcomer->Runner().IsOpen());
            holder->Runner().SetHolding(false);
        }
        stage.AwaitIdle();
        EXPECT_EQ(stage.Devices().Holder(), "newcomer");
        EXPECT_EQ(stage.Has("holder askedToLetGo"), test.isAsked);
        EXPECT_EQ(stage.Has("holder replaced"), !test.isAsked);
        EXPECT_EQ(holder->Runner().IsOpen(), !test.waits) << "it was told to hold on, or not asked";
    }
}

TEST(Handover, ADeactivatedDeviceMayLetGoLaterAndTheNextOneWaits)
{
    DeviceStage stage;
    FakeHardware card;
    const auto first = stage.MakePlayer("first", 1, card);
    const auto second = stage.MakePlayer("second", 2, card);
    stage.Activate(first->Runner());
    first->Runner().SetHolding(true);
    stage.Devices().Reset();
    stage.AwaitIdle();
    EXPECT_EQ(stage.Devices().Holder(), "");
    EXPECT_TRUE(first->Runner().IsOpen());

    stage.Devices().Activate(second->Runner().Proxy());
    stage.Await("the second waits", [&] { return stage.Devices().WaitsFor().has_value(); });
    EXPECT_EQ(stage.Devices().WaitsFor()->other, "first");
    first->Runner().SetHolding(false);
    stage.AwaitIdle();
    EXPECT_THAT(stage.Order({"first letGo", "second active"}), ElementsAre("first letGo", "second active"));
}

TEST(Handover, GivenTheSlotAgainAPlayerGoesOnWithWhatWasNotHeard)
{
    DeviceStage stage;
    FakeHardware card;
    const auto player = stage.MakePlayer("player1", 1, card, std::make_unique<NumberedSound>(5000));
    stage.Activate(player->Runner());
    card.Allow(3000);
    stage.Await("3000 frames were taken", [&] { return card.Taken().size() == 3000; });
    card.SetQueued(700);
    stage.Devices().Reset();
    stage.Await("it has let go", [&] { return stage.Has("player1 letGo"); });
    EXPECT_EQ(player->Position(), 2300);

    card.SetQueued(0);
    card.Allow(100'000);
    stage.Activate(player->Runner());
    stage.Await("all was played", [&] { return player->HasFinished(); });
    std::vector<float> expected(3000 + 2700);
    std::iota(expected.begin(), expected.begin() + 3000, 0.0f);
    std::iota(expected.begin() + 3000, expected.end(), 2300.0f);
    EXPECT_EQ(card.Taken(), expected);

    // What is played is played: with the slot once more it has nothing to add.
    stage.Devices().Reset();
    stage.Await("it has closed", [&] { return !player->Runner().IsOpen(); });
    stage.Activate(player->Runner());
    EXPECT_EQ(card.Taken(), expected);
}

TEST(Handover, ABusyCardIsTriedAgainAndABrokenOneGivesTheSlotBack)
{
    DeviceStage stage;
    FakeHardware card;
    const auto player = stage.MakePlayer("player1", 1, card);
    card.Refuse(kDevicesError_Busy);
    stage.Devices().Activate(player->Runner().Proxy());
    stage.AwaitIdle();
    EXPECT_FALSE(player->Runner().IsSettled());
    EXPECT_EQ(stage.Devices().Holder(), "player1");
    card.Refuse(0);
    stage.Await("it is open", [&] { return player->Runner().IsOpen(); });

    card.Break();
    card.Allow(1);
    stage.Await("the slot is free", [&] { return stage.Devices().Holder().empty(); });
    EXPECT_TRUE(player->Runner().HasFailed());
    EXPECT_FALSE(card.IsOpen());

    card.Refuse(kDevicesError_NoDevice); // and asked anew, it tries anew
    stage.Devices().Activate(player->Runner().Proxy());
    stage.Await("it fails at once", [&] {
        return stage.Order({"player1 failed"}).size() == 2 && stage.Devices().IsIdle() &&
               stage.Devices().Holder().empty();
    });
    EXPECT_EQ(card.OpenCount(), 1);
}

TEST(Handover, ARecordingThatIsCutShortIsKept)
{
    const support::TemporaryFolder folder;
    const struct {
        const char* name;
        std::function<void(DeviceStage&, FakeHardware&, std::unique_ptr<Recorder>&)> cut;
    } kCases[] = {
        {"another recording takes the slot",
         [](DeviceStage& stage, FakeHardware& card, std::unique_ptr<Recorder>&) {
             const auto other = stage.MakeRecorder("other", 3, card);
             other->Record({}, -1);
             stage.Activate(other->Runner());
         }},
        {"the slot is taken from it",
         [](DeviceStage& stage, FakeHardware&, std::unique_ptr<Recorder>&) { stage.Devices().Reset(); }},
        {"the card is unplugged",
         [](DeviceStage&, FakeHardware& card, std::unique_ptr<Recorder>&) { card.Break(); }},
        {"it goes",
         [](DeviceStage&, FakeHardware&, std::unique_ptr<Recorder>& recorder) { recorder.reset(); }},
        {"it is stopped",
         [](DeviceStage&, FakeHardware&, std::unique_ptr<Recorder>& recorder) { recorder->Stop(); }},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        DeviceStage stage;
        FakeHardware card;
        const auto path = folder / "take.wav";
        auto recorder = stage.MakeRecorder("recorder1", 1, card);
        recorder->Record(std::make_unique<WaveFile>(path, AudioFormat{48000, 1}, SampleForm::kInt16, false),
                         -1);
        stage.Activate(recorder->Runner());
        card.Allow(2000);
        stage.Await("2000 frames were recorded", [&] { return recorder->RecordedFrames() == 2000; });
        EXPECT_FALSE(std::filesystem::exists(path)) << "it appears when it is complete";
        test.cut(stage, card, recorder);
        stage.Await("it is complete", [&] { return stage.Has("recorder1 recorded"); });
        EXPECT_EQ(support::ReadFile(path).size(), 80u + 2000 * 2);
        std::filesystem::remove(path);
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
        if (recorder) {
            EXPECT_EQ(recorder->Runner().Proxy()->GetPriority(),
                      TR::IPreemptableProxy::kPriorityRecorderStopped);
        }
    }
}
