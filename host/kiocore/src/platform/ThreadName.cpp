#include "platform/ThreadName.h"

#include <pthread.h>

namespace kiocore::platform {

void NameThisThread(const std::string& inName) noexcept
{
#if defined(__APPLE__)
    pthread_setname_np(inName.c_str());
#else
    char name[16] = {}; // the most that the system keeps, with its zero byte; longer names are refused
    inName.copy(name, sizeof(name) - 1);
    pthread_setname_np(pthread_self(), name);
#endif
}

} // namespace kiocore::platform
