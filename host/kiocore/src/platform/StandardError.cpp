#include "platform/StandardError.h"

#include <unistd.h>

namespace kiocore::platform {

void WriteLineToStandardError(std::string inLine)
{
    inLine += '\n';
    for (std::size_t done = 0; done < inLine.size();) {
        const ssize_t more = ::write(STDERR_FILENO, inLine.data() + done, inLine.size() - done);
        if (more <= 0) {
            return;
        }
        done += static_cast<std::size_t>(more);
    }
}

} // namespace kiocore::platform
