#include "Restart.h"

namespace trhost {
namespace {

bool sIsRequested = false;

} // namespace

void RequestRestart()
{
    sIsRequested = true;
}

bool IsRestartRequested()
{
    return sIsRequested;
}

} // namespace trhost
