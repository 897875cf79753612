#include "InterruptWatch.h"

#include <kiocore/threads/MainThread.h>
#include <kioui/ui/Dialog.h>
#include <kioui_testing/NodeTree.h>

#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace trhost::ui {

namespace {

void Watch(int inFile, int inEnd)
{
    const auto mainThread = kiocore::threads::GetRegisteredMainThread();
    pollfd files[2] = {{inFile, POLLIN, 0}, {inEnd, POLLIN, 0}};
    while (poll(files, 2, -1) < 0 && errno == EINTR) {
    }
    if (files[0].revents != 0 && files[1].revents == 0 && mainThread) {
        mainThread->Post(&CancelAllDialogs);
    }
}

} // namespace

InterruptWatch::InterruptWatch(int inFile)
{
    if (inFile >= 0) {
        mEnd = eventfd(0, EFD_CLOEXEC);
        mThread = std::thread([inFile, end = mEnd] { Watch(inFile, end); });
    }
}

InterruptWatch::~InterruptWatch()
{
    if (mThread.joinable()) {
        const std::uint64_t one = 1;
        while (write(mEnd, &one, sizeof(one)) < 0 && errno == EINTR) {
        }
        mThread.join();
        close(mEnd);
    }
}

void CancelAllDialogs()
{
    for (kioui::UI_OSWindow* window : kioui::testing::ShownWindows()) {
        if (auto* dialog = dynamic_cast<kioui::UI_Dialog*>(window)) {
            dialog->EndModal(kioui::UI_Dialog::kResult_Cancel);
        }
    }
}

} // namespace trhost::ui
