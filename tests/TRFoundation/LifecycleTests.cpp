#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <TR/DeviceControlAbortFlag.h>
#include <TR/EffectType.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <TR/PreemptionManager.h>
#include <TR/SharedThreads.h>
#include <TR/TRFoundation.h>
#include <TR/TraceryModule.h>

#include <BE/Backend.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/MainThread.h>
#include <kiocore/utility/Processor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

namespace {

using kiocore::Guid;
using kiocore::UTF16String;
using kiocore::messaging::IsStationRegistered;
using testing::ElementsAre;
using testing::HasSubstr;
namespace Library = TR::TRFoundation;

const std::vector<std::string> kStart = {
    "BE::Initialize",
    "kiocore::messaging::RegisterStation(\"tr.effecttype\", 1)",
    "kiocore::classref::ClassFactory::RegisterClass(102bfb4c-1980-4e77-87df-17b03d5b09db, "
    "\"kMediaAcceleratorDatabaseClassID\", \"MediaAcceleratorDatabase\")",
    "kiocore::classref::ClassFactory::RegisterClass(e727e14d-731c-47f8-9d24-2cb69e8c5323, "
    "\"kMediaAcceleratorDatabaseEntryClassID\", \"MediaAcceleratorDatabaseEntry\")",
    "kiocore::utility::ProcessorSupportsSSE",
    "kiocore::threads::CreateCPUBoundExecutor",
    "kiocore::threads::CreateIOBoundExecutor",
    "kiocore::threads::CreateSubExecutor",
    "kiocore::threads::CreateSubExecutor",
    "kiocore::threads::CreateSubExecutor",
    "kiocore::threads::CreateSubExecutor",
    "kiocore::threads::CreateSubExecutor",
    "kiocore::threads::RecursiveMutex::Lock(\"StaticImageFactory::Register\", 60000)"};
const std::vector<std::string> kStop = {
    "kiocore::threads::RecursiveMutex::Lock(\"StaticImageFactory::Register\", 60000)",
    "kiocore::threads::GetRegisteredMainThread", "kiocore::messaging::DisposeStation(\"tr.effecttype\")",
    "BE::Shutdown"};

std::vector<std::string> StartAndStop()
{
    std::vector<std::string> calls = kStart;
    calls.insert(calls.end(), kStop.begin(), kStop.end());
    return calls;
}

TEST(Lifecycle, StartsAndStopsInOrderOnTheFirstAndLastClientOnly)
{
    support::TraceRecorder trace("Host");
    const std::vector<std::string> calls = StartAndStop();
    for (int round = 0; round < 2; ++round) { // a full stop can be followed by a full start
        SCOPED_TRACE(round);
        trace.Clear();
        EXPECT_EQ(Library::Initialize(), 0);
        EXPECT_EQ(trace.Order(calls), kStart);
        EXPECT_TRUE(IsStationRegistered(TR::kStation_EffectType));

        trace.Clear();
        EXPECT_EQ(Library::Initialize(), 0);
        EXPECT_EQ(Library::Shutdown(), 0);
        EXPECT_EQ(trace.Order(calls), std::vector<std::string>());
        EXPECT_TRUE(TR::sLowPriorityRenderQueue);

        EXPECT_EQ(Library::Shutdown(), 0);
        EXPECT_EQ(trace.Order(calls), kStop);
        EXPECT_FALSE(TR::sLowPriorityRenderQueue);
        EXPECT_FALSE(IsStationRegistered(TR::kStation_EffectType));
    }
}

/// A device that tells on the trace when it goes.
class MortalDevice final : public TR::IPreemptableProxy, public virtual kiocore::classref::UnknownBase {
public:
    ~MortalDevice() override { KIO_HOST_CALL("MortalDevice goes"); }
    std::uint32_t GetPriority() override { return kPriorityPlayer; }
    void Activate() override {}
    void Preempt(const TR::IPreemptableProxyRef&, std::shared_ptr<kiocore::threads::Gate>&) override
    {
        ADD_FAILURE() << "shutdown tells nobody";
    }
    std::uint32_t GetHandoverKey() override { return 1; }
    void* QueryMap(const CFUUIDBytes&) override { return nullptr; }
};

TEST(Lifecycle, ShutdownLetsTheActiveDeviceGoAfterTheDatabaseAndBeforePostedWork)
{
    Library::Initialize();
    const auto manager = TR::CreatePreemptionManager();
    EXPECT_TRUE(manager->ActivateDevice(kiocore::classref::MakeObject<MortalDevice>()));
    const support::TraceRecorder trace("Host");
    Library::Shutdown();
    EXPECT_THAT(
        trace.Order({"kiocore::threads::RecursiveMutex::Lock(\"StaticImageFactory::Register\"",
                     "MortalDevice goes", "kiocore::threads::GetRegisteredMainThread", "BE::Shutdown"}),
        ElementsAre("kiocore::threads::RecursiveMutex::Lock(\"StaticImageFactory::Register\"",
                    "MortalDevice goes", "kiocore::threads::GetRegisteredMainThread", "BE::Shutdown"));
}

TEST(Lifecycle, ASurplusShutdownOnlyCounts)
{
    EXPECT_EQ(Library::Shutdown(), 0);
    EXPECT_EQ(Library::Initialize(), 0); // back to zero: starts nothing
    EXPECT_FALSE(TR::sLowPriorityRenderQueue);
    EXPECT_EQ(Library::Initialize(), 0);
    EXPECT_TRUE(TR::sLowPriorityRenderQueue);
    EXPECT_EQ(Library::Shutdown(), 0);
}

TEST(Lifecycle, RefusesAProcessorWithoutSSE)
{
    kiocore::config::SetClientName(u"Cutting Room");
    {
        const kiocore::utility::ScReplaceProcessorCapabilities old(false);
        try {
            Library::Initialize();
            FAIL() << "no exception";
        } catch (const kiocore::kio_exception& error) {
            EXPECT_STREQ(error.what(),
                         "Cutting Room cannot run on this computer because the processor does not support "
                         "the SSE instruction set.");
        }
        EXPECT_FALSE(TR::sLowPriorityRenderQueue);
    }
    EXPECT_EQ(Library::Initialize(), 0); // the lock is free and the count was not touched
    EXPECT_TRUE(TR::sLowPriorityRenderQueue);
    EXPECT_EQ(Library::Shutdown(), 0);
    EXPECT_FALSE(TR::sLowPriorityRenderQueue);
}

TEST(Lifecycle, LetsPostedWorkRunOutAtShutdown)
{
    for (const bool fromMainThread : {true, false}) {
        SCOPED_TRACE(fromMainThread);
        const auto mainThread = kiocore::threads::RegisterMainThread();
        Library::Initialize();
        std::atomic<int> ran{0};
        mainThread->Post([&] { ++ran; });
        if (fromMainThread) {
            Library::Shutdown();
        } else {
            std::atomic<bool> down{false};
            std::thread other([&] {
                Library::Shutdown();
                EXPECT_EQ(ran, 1);
                down = true;
                mainThread->Post([] {});
            });
            mainThread->RunUntil([&] { return down.load(); }, std::chrono::steady_clock::time_point::max());
            other.join();
        }
        EXPECT_EQ(ran, 1);
        kiocore::threads::UnregisterMainThread();
    }
}

int Answer(const UTF16String& inPath, bool inFlag, Guid& outDocument, Guid& outState)
{
    outDocument = Guid("00000000-0000-0000-0000-00000000000a");
    outState = Guid("00000000-0000-0000-0000-00000000000b");
    return static_cast<int>(inPath.size()) * (inFlag ? 1 : -1);
}

TEST(Lifecycle, AsksTheResolverAndAnswersUnknownWithoutOne)
{
    Guid document("00000000-0000-0000-0000-000000000001");
    Guid state("00000000-0000-0000-0000-000000000002");
    const auto ask = [&](bool flag) {
        return Library::GetDocumentIDAndContentStateFromPath(u"abc", flag, document, state);
    };
    EXPECT_EQ(ask(true), -1);
    EXPECT_EQ(document, Guid("00000000-0000-0000-0000-000000000001"));
    EXPECT_EQ(state, Guid("00000000-0000-0000-0000-000000000002"));
    Library::RegisterGetDocumentIDAndContentStateFromPathFunction(&Answer);
    EXPECT_EQ(ask(true), 3);
    EXPECT_EQ(ask(false), -3);
    EXPECT_EQ(document, Guid("00000000-0000-0000-0000-00000000000a"));
    EXPECT_EQ(state, Guid("00000000-0000-0000-0000-00000000000b"));
    Library::RegisterGetDocumentIDAndContentStateFromPathFunction(nullptr);
    EXPECT_EQ(ask(true), -1);
}

TEST(SharedThreads, SerialQueuesRunOneTaskAtATime)
{
    TR::StartSharedThreadQueues();
    for (const auto& queue :
         {TR::sLowPriorityRenderQueue, TR::sDeferredMediaProcessingQueue, TR::sVideoSourcePrefetcherQueue}) {
        std::atomic<int> running{0};
        std::atomic<int> most{0};
        std::promise<void> done;
        for (int i = 0; i < 200; ++i) {
            ASSERT_GE(queue->Submit([&, i] {
                most = std::max(most.load(), ++running);
                std::this_thread::yield();
                --running;
                if (i == 199) {
                    done.set_value();
                }
            }),
                      0);
        }
        done.get_future().wait();
        EXPECT_EQ(most, 1);
    }
    TR::StopSharedThreadQueues();
}

TEST(SharedThreads, AParallelQueueUsesSeveralThreads)
{
    TR::StartSharedThreadQueues();
    // Each task waits for the other: one thread could never end them.
    std::promise<void> first, second;
    std::promise<void> done;
    TR::sImageSourcePrefetcherQueue->Submit([&] {
        first.set_value();
        second.get_future().wait();
        done.set_value();
    });
    TR::sImageSourcePrefetcherQueue->Submit([&] {
        first.get_future().wait();
        second.set_value();
    });
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    TR::StopSharedThreadQueues();
}

TEST(SharedThreads, ACopiedHandleOutlivesTheStop)
{
    EXPECT_FALSE(TR::sNormalPriorityRenderQueue);
    TR::StartSharedThreadQueues();
    const auto queue = TR::sNormalPriorityRenderQueue;
    TR::StopSharedThreadQueues();
    EXPECT_FALSE(TR::sNormalPriorityRenderQueue);
    std::promise<void> done;
    EXPECT_GE(queue->Submit([&] { done.set_value(); }), 0);
    done.get_future().wait();
}

TEST(ProcessGlobals, HoldWhatWasSet)
{
    EXPECT_FALSE(TR::GetDeviceControlAbortFlag());
    TR::SetDeviceControlAbortFlag(true);
    EXPECT_TRUE(TR::GetDeviceControlAbortFlag());
    TR::SetDeviceControlAbortFlag(false);
    EXPECT_FALSE(TR::GetDeviceControlAbortFlag());
    EXPECT_EQ(TR::GetMainWindow(), nullptr);
    int window = 0;
    TR::SetMainWindow(reinterpret_cast<NSWindow*>(&window));
    EXPECT_EQ(TR::GetMainWindow(), reinterpret_cast<NSWindow*>(&window));
    TR::SetMainWindow(nullptr);
}

} // namespace
