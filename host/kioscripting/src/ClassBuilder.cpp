#include <kioscripting/ClassBuilder.h>

#include <kiocore/config/Errors.h>

#include <stdexcept>

namespace kioscripting {

void detail::RethrowForArgument(const ParameterDefinition& inParameter)
{
    try {
        throw;
    } catch (const kiocore::kio_exception& error) {
        throw kiocore::kio_exception("argument " + inParameter.name + ": " + error.what(), error.Code());
    }
}

void CheckCount(const ClassDefinition& inClass, std::size_t inDescribed, std::size_t inTaken)
{
    if (inDescribed != inTaken) {
        throw std::logic_error(inClass.QualifiedName() + ": a member takes " + std::to_string(inTaken) +
                               " arguments, but is described with " + std::to_string(inDescribed));
    }
}

} // namespace kioscripting
