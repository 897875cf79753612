#include <kiocore/utility/Processor.h>

#include <kiocore/debug/Trace.h>

#include <atomic>

namespace kiocore::utility {
namespace {

constexpr int kNotReplaced = -1;
std::atomic<int> sReplacement{kNotReplaced};

bool AskProcessor()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    return __builtin_cpu_supports("sse") != 0;
#elif defined(__aarch64__)
    return true; // its vector unit is part of the base instruction set
#else
    return false;
#endif
}

} // namespace

bool ProcessorSupportsSSE()
{
    KIO_HOST_CALL("kiocore::utility::ProcessorSupportsSSE");
    static const bool supports = AskProcessor();
    const int replacement = sReplacement.load(std::memory_order_relaxed);
    return replacement == kNotReplaced ? supports : replacement != 0;
}

ScReplaceProcessorCapabilities::ScReplaceProcessorCapabilities(bool inSupportsSSE)
    : mPrevious(sReplacement.exchange(inSupportsSSE ? 1 : 0))
{}
ScReplaceProcessorCapabilities::~ScReplaceProcessorCapabilities()
{
    sReplacement.store(mPrevious);
}

} // namespace kiocore::utility
