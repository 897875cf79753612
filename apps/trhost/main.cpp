#include "commands/CommandLine.h"
#include "support/Restart.h"

#include <kiocore/platform/Modules.h>

#include <unistd.h>

int main(int inCount, char** inArguments)
{
    const int status = trhost::RunProgram(inCount, inArguments);
    if (trhost::IsRestartRequested()) {
        execv(kiocore::platform::ProgramPath().c_str(), inArguments);
    }
    return status;
}
