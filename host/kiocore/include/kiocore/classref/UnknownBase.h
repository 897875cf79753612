#pragma once

#include <kiocore/Export.h>
#include <kiocore/platform/PlatformTypes.h>

#include <memory>

namespace kiocore::classref {

/// What every interface derives from (virtually): a way to ask an object for another interface.
///
/// An interface offers `static const CFUUIDBytes& InterfaceID()` when it can be asked for.
class KIO_EXPORT Unknown {
public:
    virtual ~Unknown();
    /// @return the object's implementation of the interface, as a pointer to that very interface
    /// type, or null when the object does not have it. Borrowed: valid while the object lives.
    virtual void* QueryMap(const CFUUIDBytes& inInterfaceID) = 0;
};

/// The identity of a class-factory object. Keeps a weak reference to itself, so that the object can
/// hand out references to itself.
///
/// Threading: identity may be asked from any thread.
class KIO_EXPORT UnknownBase : public virtual Unknown {
public:
    ~UnknownBase() override;
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

    /// Shares the object; empty while it is being constructed or destroyed, and for an object that
    /// was not made by MakeObject.
    std::shared_ptr<UnknownBase> SharedSelf() const { return mSelf.lock(); }
    /// For who wants to know the object as long as others keep it alive.
    std::weak_ptr<UnknownBase> GetWeakReference() const { return mSelf; }
    /// Called once, by whoever made the control block.
    void SetSelf(std::weak_ptr<UnknownBase> inSelf) { mSelf = std::move(inSelf); }

private:
    std::weak_ptr<UnknownBase> mSelf;
};

} // namespace kiocore::classref
