#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/RefCountedObject.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace kioscripting {

/// What the bridge knows of every object that scripts can hold.
class KIO_EXPORT ScriptObjectBase {
public:
    virtual ~ScriptObjectBase();

    /// As scripts call it, without its namespace. A literal.
    virtual const char* GetClassname() const = 0;
    /// The context that the object belongs to (Context.h); 0 for one that was not made by CreateScriptObject
    /// or a constructor. Never changes.
    virtual int GetContextHdl() const = 0;
};

/// Base of native objects that scripts hold. Deleted when neither a script nor anybody else holds it any
/// more: when an engine has found it unused, or its context was closed, on whatever thread.
///
/// Threading: made and used on the thread of its engine, destroyed on any.
class KIO_EXPORT ScriptObject : public virtual ScriptObjectBase,
                                public virtual kiocore::utility::RefCountedObject {
public:
    ScriptObject();
    ~ScriptObject() override;
    int GetContextHdl() const override { return mContext; }

private:
    friend struct ScriptObjectAccess;
    int mContext = 0;
};
using ScriptObjectPtr = boost::intrusive_ptr<ScriptObject>;

/// Offered by script objects that stand for something of the host's, so that a script value can be passed
/// back to natives that take a T.
template <typename T>
class ICast {
public:
    virtual ~ICast() = default;
    /// @param outThing  empty when there is none any more.
    /// @return whether there is.
    virtual bool CastTo(T& outThing) const = 0;
};

} // namespace kioscripting
