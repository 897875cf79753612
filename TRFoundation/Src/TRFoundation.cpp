#include <TR/TRFoundation.h>

#include <TR/EffectType.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <TR/MediaAcceleratorDatabaseEntry.h>
#include <TR/PreemptionManager.h>
#include <TR/SharedThreads.h>
#include <TR/StaticImageFactory.h>

#include <BE/Backend.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>
#include <kiocore/debug/Debugger.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/MainThread.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/Processor.h>

#include <chrono>
#include <cstdint>

namespace TR {

const Guid kMediaAcceleratorDatabaseClassID("102BFB4C-1980-4e77-87DF-17B03D5B09DB");
const Guid kMediaAcceleratorDatabaseEntryClassID("E727E14D-731C-47f8-9D24-2CB69E8C5323");

namespace TRFoundation {
namespace {

using kiocore::classref::ClassFactory;
using kiocore::threads::kLockLimit;
using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;

/// How long Shutdown lets the main thread finish what was posted to it.
constexpr std::chrono::seconds kMainThreadLimit{86400};

/// A client that forgot its Shutdown is a programming error that only a debugger can still show.
struct RefCountChecker {
    ~RefCountChecker();
};

std::int32_t sRefCount = 0;
GetDocumentIDAndContentStateFromPathFunction sGetDocumentIDAndContentStateFromPathFunction = nullptr;
// Made in this order, so that at exit the checker runs first and the lock goes last.
RecursiveMutex sCriticalSection;
RefCountChecker sRefCountChecker;

RefCountChecker::~RefCountChecker()
{
    if (sRefCount != 0 && kiocore::debug::IsDebuggerAttached()) {
        kiocore::debug::BreakIntoDebugger();
    }
}

[[noreturn]] void ThrowNoSSE()
{
    const UTF16String clientName = kiocore::config::GetClientName();
    const UTF16String none;
    kiocore::config::ThrowError(
        0,
        "$$$/Vireo/FrontEnd/AppStartupNoSSE=^1 cannot run on this computer because the "
        "processor does not support the SSE instruction set.",
        0, 0, true, clientName, none, none, none);
}

void StartEverything()
{
    BE::Initialize();
    kiocore::messaging::RegisterStation(kStation_EffectType, kiocore::messaging::kObserveStation_Traced);
    ClassFactory::RegisterClass(kMediaAcceleratorDatabaseClassID, "kMediaAcceleratorDatabaseClassID",
                                "MediaAcceleratorDatabase", &MediaAcceleratorDatabase::CreateInstanceRef);
    ClassFactory::RegisterClass(kMediaAcceleratorDatabaseEntryClassID,
                                "kMediaAcceleratorDatabaseEntryClassID", "MediaAcceleratorDatabaseEntry",
                                &MediaAcceleratorDatabaseEntry::CreateInstanceRef);
    if (!kiocore::utility::ProcessorSupportsSSE()) {
        ThrowNoSSE();
    }
    MediaAcceleratorDatabase::Startup();
    StartSharedThreadQueues();
    StaticImageFactory::InitializeDefault();
}

void StopEverything()
{
    StaticImageFactory::TerminateDefault();
    StopSharedThreadQueues();
    MediaAcceleratorDatabase::Shutdown();
    CreatePreemptionManager()->Shutdown();
    if (const auto mainThread = kiocore::threads::GetRegisteredMainThread()) {
        mainThread->WaitForPostedWork(std::chrono::steady_clock::now() + kMainThreadLimit);
    }
    kiocore::messaging::DisposeStation(kStation_EffectType);
    BE::Shutdown();
}

} // namespace

int Initialize()
{
    ScLock lock(sCriticalSection, kLockLimit);
    if (sRefCount == 0) {
        StartEverything();
    }
    ++sRefCount;
    return 0;
}

int Shutdown()
{
    ScLock lock(sCriticalSection, kLockLimit);
    if (--sRefCount == 0) {
        StopEverything();
    }
    return 0;
}

void RegisterGetDocumentIDAndContentStateFromPathFunction(
    GetDocumentIDAndContentStateFromPathFunction inFunction)
{
    sGetDocumentIDAndContentStateFromPathFunction = inFunction;
}

int GetDocumentIDAndContentStateFromPath(const UTF16String& inPath, bool inFlag, Guid& outDocumentID,
                                         Guid& outContentState)
{
    const auto function = sGetDocumentIDAndContentStateFromPathFunction;
    return function ? function(inPath, inFlag, outDocumentID, outContentState) : -1;
}

} // namespace TRFoundation
} // namespace TR
