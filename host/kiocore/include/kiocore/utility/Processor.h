#pragma once

#include <kiocore/Export.h>

namespace kiocore::utility {

/// What the processor can do, as asked of it once. On processors of another family the answer is about
/// the vector unit that takes SSE's place there.
///
/// Threading: any thread.
KIO_EXPORT bool ProcessorSupportsSSE();

/// Lets a test run on a processor of its choice for as long as it lives.
class KIO_EXPORT ScReplaceProcessorCapabilities {
public:
    explicit ScReplaceProcessorCapabilities(bool inSupportsSSE);
    ~ScReplaceProcessorCapabilities();
    ScReplaceProcessorCapabilities(const ScReplaceProcessorCapabilities&) = delete;
    ScReplaceProcessorCapabilities& operator=(const ScReplaceProcessorCapabilities&) = delete;

private:
    int mPrevious;
};

} // namespace kiocore::utility
