#pragma once

#include <kioscripting/ScriptObject.h>

namespace kioscripting {

/// What the bridge alone may do to an object.
struct ScriptObjectAccess {
    /// Before anybody else sees the object.
    static void SetContext(ScriptObject& ioObject, int inContext);
};

/// An object that was made in a context is gone.
void ForgetObject(int inContext) noexcept;

} // namespace kioscripting
