#pragma once

#include <new>

/// What the modules that link FFmpeg's libraries share; nothing of those shows here.
namespace trhost {

/// Lets a `std::unique_ptr` own what the libraries free through a pointer to the pointer.
template <auto Free>
struct FreeThroughPointer {
    template <class T>
    void operator()(T* inObject) const noexcept
    {
        Free(&inObject);
    }
};

/// The libraries answer a failed allocation with null.
template <class T>
T* Allocated(T* inObject)
{
    if (!inObject) {
        throw std::bad_alloc();
    }
    return inObject;
}

} // namespace trhost
