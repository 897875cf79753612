#include "Commands.h"

#include "../devices/DeviceScript.h"
#include "../devices/DeviceScriptRun.h"
#include "../support/Failure.h"
#include "../support/Interrupt.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace trhost {

namespace {

constexpr std::size_t kMostBytes = 1 << 20; // of a script that a person, or a program, would write

/// Reads a file, or standard input for "-".
std::string ReadScript(const std::string& inPath)
{
    const bool isInput = inPath == "-";
    const int file = isInput ? dup(STDIN_FILENO) : open(inPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        throw kiocore::file_exception("open", inPath, errno);
    }
    struct Close {
        int file;
        ~Close() { close(file); }
    } const owner{file};
    std::string text;
    char block[16384];
    for (;;) {
        pollfd files[2] = {{file, POLLIN, 0}, {GetInterruptFile(), POLLIN, 0}};
        poll(files, 2, -1);
        ThrowIfInterrupted();
        const ssize_t got = read(file, block, sizeof block);
        if (got < 0 && errno != EINTR) {
            throw kiocore::file_exception("read", inPath, errno);
        }
        if (got == 0) {
            return text;
        }
        text.append(block, std::size_t(got > 0 ? got : 0));
        if (text.size() > kMostBytes) {
            throw Failure(kExit_Usage,
                          Text("$$$/Halcyon/TrHost/Script/TooLong=@0 is no script: it has more than 1 MB",
                               {kiocore::filesupport::FromNative(inPath)}));
        }
    }
}

} // namespace

int RunDevices(Context& ioContext, const DevicesOptions& inOptions)
{
    const UTF16String name = inOptions.script == "-" ? Text("$$$/Halcyon/TrHost/Script/Input=standard input")
                                                     : kiocore::filesupport::FromNative(inOptions.script);
    const devices::DeviceScript script = devices::ParseDeviceScript(ReadScript(inOptions.script));
    for (const devices::ScriptError& error : script.errors) {
        ioContext.output.Error(
            Text("$$$/Halcyon/TrHost/Script/AtLine=@0:@1: @2#{@0: a file, @1: line, @2: what}",
                 {name, kiocore::utility::DecimalText(unsigned(error.line)), error.text}));
    }
    if (!script.errors.empty()) {
        return kExit_Usage; // before anything was opened
    }
    devices::DeviceScriptRun(ioContext, name, inOptions.force).Run(script);
    return kExit_Done;
}

} // namespace trhost
