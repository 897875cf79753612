#pragma once

#include <cxxabi.h>

#include <cstdlib>
#include <string>
#include <typeinfo>

namespace kiocore::debug {

/// A type as a person would write it.
inline std::string TypeName(const std::type_info& inType)
{
    int status = 0;
    char* readable = abi::__cxa_demangle(inType.name(), nullptr, nullptr, &status);
    std::string name = status == 0 ? readable : inType.name();
    std::free(readable);
    return name;
}

} // namespace kiocore::debug
