#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/UnknownBase.h>
#include <kiocore/utility/MemoryRecycler.h>

#include <cstddef>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace kiocore::classref {

/// @throws null_reference_exception naming the type as a person would write it.
[[noreturn]] KIO_EXPORT void ThrowNullReference(const std::type_info& inType);

/// Shared handle on a class-factory object: the interface's pointer and the object's identity. Two
/// references denote the same object when their identities are equal, whatever their interfaces.
///
/// Threading: like std::shared_ptr; distinct handles on one object may be used on different threads.
template <typename T>
class InterfaceRef {
public:
    InterfaceRef() noexcept = default;
    InterfaceRef(std::nullptr_t) noexcept {}
    InterfaceRef(T* inInterface, std::shared_ptr<UnknownBase> inIdentity) noexcept
        : mInterface(inInterface), mIdentity(std::move(inIdentity))
    {}
    /// From a derived interface by conversion; from an unrelated one by asking the object, which
    /// leaves this empty when the object does not have the interface.
    template <typename U>
    InterfaceRef(const InterfaceRef<U>& inOther)
    {
        if constexpr (std::is_convertible_v<U*, T*>) {
            mInterface = inOther.Get();
        } else if (inOther) {
            mInterface = static_cast<T*>(inOther.Identity()->QueryMap(T::InterfaceID()));
        }
        if (mInterface) {
            mIdentity = inOther.Identity();
        }
    }

    T* Get() const noexcept { return mInterface; }
    /// @throws null_reference_exception when empty.
    T* operator->() const
    {
        if (!mInterface) {
            ThrowNullReference(typeid(T));
        }
        return mInterface;
    }
    /// @throws null_reference_exception when empty.
    T& operator*() const { return *operator->(); }
    explicit operator bool() const noexcept { return mInterface != nullptr; }
    const std::shared_ptr<UnknownBase>& Identity() const noexcept { return mIdentity; }

    void Reset() noexcept
    {
        mInterface = nullptr;
        mIdentity.reset();
    }

    template <typename U>
    friend bool operator==(const InterfaceRef& inA, const InterfaceRef<U>& inB) noexcept
    {
        return inA.Identity() == inB.Identity();
    }
    friend bool operator==(const InterfaceRef& inA, std::nullptr_t) noexcept { return !inA.mInterface; }

private:
    T* mInterface = nullptr;
    std::shared_ptr<UnknownBase> mIdentity;
};

/// Makes an object of class C in a control block from the memory recycler and tells it its
/// identity. Empty when no memory could be had.
template <typename C, typename... Arguments>
InterfaceRef<C> MakeObject(Arguments&&... inArguments)
{
    std::shared_ptr<C> object;
    try {
        object =
            std::allocate_shared<C>(utility::RecyclerAllocator<C>(), std::forward<Arguments>(inArguments)...);
    } catch (const std::bad_alloc&) {
        return {};
    }
    object->SetSelf(std::shared_ptr<UnknownBase>(object));
    C* const interface = object.get();
    return InterfaceRef<C>(interface, std::move(object));
}

/// A reference to the object that an operation of its own runs in; empty when it has no identity yet.
template <typename T>
InterfaceRef<T> RefToSelf(T& inObject)
{
    std::shared_ptr<UnknownBase> self = inObject.SharedSelf();
    return self ? InterfaceRef<T>(&inObject, std::move(self)) : InterfaceRef<T>();
}

} // namespace kiocore::classref

namespace kiocore {
using classref::InterfaceRef;
}
