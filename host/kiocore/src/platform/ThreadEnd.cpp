#include "platform/ThreadEnd.h"

#include <new>

namespace kiocore::platform {

ThreadEndSlot::ThreadEndSlot(void (*inAtEnd)(void*))
{
    if (pthread_key_create(&mKey, inAtEnd) != 0) {
        throw std::bad_alloc();
    }
}

void ThreadEndSlot::Set(void* inPointer) const
{
    if (pthread_setspecific(mKey, inPointer) != 0) {
        throw std::bad_alloc();
    }
}

} // namespace kiocore::platform
