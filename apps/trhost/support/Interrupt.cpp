#include "Interrupt.h"

#include "Failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace trhost {

namespace {

std::atomic<bool> sInterrupted{false};
std::atomic<bool> sAskedToEnd{false};
static_assert(std::atomic<bool>::is_always_lock_free); // a signal handler sets it
int sPipe[2] = {-1, -1};
struct sigaction sBefore[2];
constexpr int kSignals[2] = {SIGINT, SIGTERM};

extern "C" void HandleSignal(int inSignal)
{
    const int error = errno;
    if (inSignal == SIGTERM) {
        sAskedToEnd.store(true, std::memory_order_relaxed);
    }
    sInterrupted.store(true, std::memory_order_relaxed);
    struct sigaction usual = {};
    usual.sa_handler = SIG_DFL;
    for (int signal : kSignals) {
        sigaction(signal, &usual, nullptr);
    }
    [[maybe_unused]] const ssize_t written = write(sPipe[1], "", 1); // a full pipe is readable all the same
    errno = error;
}

void TakeSignals()
{
    struct sigaction action = {};
    action.sa_handler = HandleSignal; // without SA_RESTART, so that a wait for input ends too
    for (int i = 0; i < 2; ++i) {
        if (sBefore[i].sa_handler != SIG_IGN) { // "nohup trhost ... &" stays immune
            sigaction(kSignals[i], &action, nullptr);
        }
    }
}

} // namespace

ScInterruptHandler::ScInterruptHandler()
{
    sInterrupted = false;
    sAskedToEnd = false;
    if (pipe2(sPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        sPipe[0] = sPipe[1] = -1;
    }
    for (int i = 0; i < 2; ++i) {
        sigaction(kSignals[i], nullptr, &sBefore[i]);
    }
    TakeSignals();
}

ScInterruptHandler::~ScInterruptHandler()
{
    for (int i = 0; i < 2; ++i) {
        sigaction(kSignals[i], &sBefore[i], nullptr);
    }
    for (int& file : sPipe) {
        if (file >= 0) {
            close(file);
        }
        file = -1;
    }
}

bool IsInterrupted()
{
    return sInterrupted.load(std::memory_order_relaxed);
}

int GetInterruptFile()
{
    return sPipe[0];
}

bool ForgetInterrupt()
{
    if (sAskedToEnd) {
        return false;
    }
    char byte;
    while (sPipe[0] >= 0 && read(sPipe[0], &byte, 1) == 1) {
    }
    sInterrupted = false;
    TakeSignals();
    return !sAskedToEnd;
}

void ThrowIfInterrupted()
{
    if (IsInterrupted()) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/Interrupted=interrupted"));
    }
}

} // namespace trhost
