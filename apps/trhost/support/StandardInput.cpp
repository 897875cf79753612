#include "StandardInput.h"

#include "Failure.h"
#include "Interrupt.h"
#include "Quantities.h"

#include <cerrno>
#include <cstring>
#include <kiocore/config/Errors.h>
#include <poll.h>
#include <unistd.h>

namespace trhost {

using kiocore::utility::ToUTF16;

std::string ReadStandardInput(std::size_t inMaxBytes)
{
    std::string text;
    char block[65536];
    for (;;) {
        pollfd files[2] = {{STDIN_FILENO, POLLIN, 0}, {GetInterruptFile(), POLLIN, 0}};
        const int ready = poll(files, 2, -1);
        ThrowIfInterrupted();
        const ssize_t got = ready < 0 ? -1 : read(STDIN_FILENO, block, sizeof(block));
        if (got == 0) {
            return text;
        }
        if (got < 0) {
            if (errno == EINTR || errno == EAGAIN) {
                continue;
            }
            throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/InputFailed=cannot read standard input: @0",
                                             {kiocore::SystemErrorText(errno)}));
        }
        text.append(block, static_cast<std::size_t>(got));
        if (text.size() > inMaxBytes) {
            throw Failure(
                kExit_Failed,
                Text("$$$/Halcyon/TrHost/InputTooLong=standard input is longer than @0, which is the "
                     "most that is read",
                     {ToUTF16(FormatSize(inMaxBytes))}));
        }
    }
}

} // namespace trhost
