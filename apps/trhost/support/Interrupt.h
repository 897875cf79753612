#pragma once

namespace trhost {

/// Turns SIGINT and SIGTERM into a flag. The first signal asks the command to stop; after it both signals
/// have their usual effect again, so a second Ctrl-C ends the process.
///
/// Threading: made on the main thread before others run; the questions from any thread.
class ScInterruptHandler {
public:
    ScInterruptHandler();
    ~ScInterruptHandler();
    ScInterruptHandler(const ScInterruptHandler&) = delete;
    ScInterruptHandler& operator=(const ScInterruptHandler&) = delete;
};

bool IsInterrupted();
/// Becomes readable, and stays so, with the first signal: for waiting on input and the signal together.
int GetInterruptFile();
/// Makes the next signal the first one again, for programs that people talk to: Ctrl-C ends what a line does.
/// @return false, and nothing has changed, when the program was asked to end (SIGTERM).
///
/// Threading: main thread.
bool ForgetInterrupt();
/// @throws Failure (kExit_Failed, "interrupted") once a signal came.
void ThrowIfInterrupted();

} // namespace trhost
