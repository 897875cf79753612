#pragma once

#include <thread>

namespace trhost::ui {

/// Closes all dialogs, as if each was cancelled, once a file becomes readable: Ctrl-C reaches windows too.
///
/// Threading: main thread.
class InterruptWatch {
public:
    /// @param inFile  outlives it; -1 watches nothing.
    explicit InterruptWatch(int inFile);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

private:
    int mEnd = -1; // readable when it is over
    std::thread mThread;
};

/// Ends all modal dialogs as if each was cancelled.
void CancelAllDialogs();

} // namespace trhost::ui
