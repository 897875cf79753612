#pragma once

#include <kiocore/Export.h>
#include <kiocore/config/Errors.h>

namespace kiocore {

/// A caller broke an agreement about what it hands in.
class KIO_EXPORT input_contract_exception : public kio_exception {
public:
    input_contract_exception();
    ~input_contract_exception() override;
};

namespace debug {

/// Notes a broken assertion on trace channel "Assert" at level 1 and breaks into an attached debugger.
/// Returns when there is none.
/// @param inCondition  what did not hold, as source text.
/// @param inFunction   where, as the compiler writes the function.
/// @param inSource     the module, without extension.
KIO_EXPORT void AssertionFailed(const char* inCondition, const char* inFunction, const char* inSource);

} // namespace debug

namespace utility {

/// @throws input_contract_exception: "An input contract violation has occurred!", localised.
[[noreturn]] KIO_EXPORT void ThrowInputContractViolation();

} // namespace utility
} // namespace kiocore
