#pragma once

#include <kiocore/Export.h>

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace kiocore::utility {

/// Counts the boost::intrusive_ptrs on an object and deletes it with the last one. Made to be a virtual base,
/// so that interfaces and implementations that come together in one object share one count.
///
/// Threading: any thread; the object is deleted on whichever lets go last.
class KIO_EXPORT RefCountedObject {
public:
    RefCountedObject() = default;
    RefCountedObject(const RefCountedObject&) = delete;
    RefCountedObject& operator=(const RefCountedObject&) = delete;

    int GetReferenceCount() const noexcept { return mCount.load(std::memory_order_relaxed); }

protected:
    virtual ~RefCountedObject();

private:
    friend void intrusive_ptr_add_ref(const RefCountedObject* inObject) noexcept
    {
        inObject->mCount.fetch_add(1, std::memory_order_relaxed);
    }
    friend void intrusive_ptr_release(const RefCountedObject* inObject) noexcept
    {
        if (inObject->mCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete inObject;
        }
    }

    mutable std::atomic<int> mCount{0};
};

} // namespace kiocore::utility
