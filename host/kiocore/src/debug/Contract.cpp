#include <kiocore/debug/Contract.h>

#include <kiocore/config/Localizer.h>
#include <kiocore/debug/Debugger.h>
#include <kiocore/debug/Trace.h>

#include <string>

namespace kiocore {

input_contract_exception::input_contract_exception()
    : kio_exception(config::Localizer::GetText("$$$/kiocore/utility/Error/Contract/InputContractViolation=An "
                                               "input contract violation has occurred!"),
                    kError_InputContract)
{}
input_contract_exception::~input_contract_exception() = default;

void debug::AssertionFailed(const char* inCondition, const char* inFunction, const char* inSource)
{
    KIO_HOST_CALL("kiocore::debug::AssertionFailed", inCondition, inFunction, inSource);
    Trace(1, "Assert",
          std::string("Assertion failed: ") + inCondition + " in " + inFunction + " (" + inSource + ")");
    if (IsDebuggerAttached()) {
        BreakIntoDebugger();
    }
}

void utility::ThrowInputContractViolation()
{
    KIO_HOST_CALL("kiocore::utility::ThrowInputContractViolation");
    throw input_contract_exception();
}

} // namespace kiocore
