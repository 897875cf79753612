#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>

#include <cstring>
#include <string>
#include <vector>

namespace kiocore::classref {

/// Makes objects of classes that are known by identifier only, so that a record can name the class
/// of the object it holds.
///
/// Threading: any thread. Factory functions are called without a lock of ours.
class KIO_EXPORT ClassFactory {
public:
    /// Stores a new object, or an empty reference when none could be made.
    using FactoryFunction = void (*)(InterfaceRef<UnknownBase>& outObject);

    /// Registers a class. Registering one again is no error; the newest registration counts.
    /// @param inClassIDName, inClassName  must outlive the process's use of the class (literals).
    static void RegisterClass(const utility::Guid& inClassID, const char* inClassIDName,
                              const char* inClassName, FactoryFunction inFactory);

    /// @throws kio_exception (kError_ClassNotRegistered) naming the identifier when it is unknown.
    static InterfaceRef<UnknownBase> CreateClassInstanceRef(const utility::Guid& inClassID);
    /// The same operation under its other name.
    static InterfaceRef<UnknownBase> CreateInstanceRef(const utility::Guid& inClassID)
    {
        return CreateClassInstanceRef(inClassID);
    }
    /// Makes an object if somebody registered the class.
    /// @param outObject  set on success, untouched otherwise.
    /// @return 0; negative when nobody registered the identifier, or the factory made nothing. What the
    /// factory
    ///     throws passes through.
    static int CreateInstanceRef(const utility::Guid& inClassID, InterfaceRef<UnknownBase>& outObject);
    static bool IsRegistered(const utility::Guid& inClassID);
};

/// An interface's identifier as the class factory takes it, for classes that are found by what they
/// implement.
template <typename Interface>
utility::Guid GuidOf()
{
    utility::Guid::Bytes bytes;
    std::memcpy(bytes.data(), &Interface::InterfaceID(), bytes.size());
    return utility::Guid(bytes);
}

} // namespace kiocore::classref
