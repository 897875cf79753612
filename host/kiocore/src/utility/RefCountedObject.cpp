#include <kiocore/utility/RefCountedObject.h>

namespace kiocore::utility {

RefCountedObject::~RefCountedObject() = default;

} // namespace kiocore::utility
