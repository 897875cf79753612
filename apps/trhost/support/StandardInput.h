#pragma once

#include <cstddef>
#include <string>

namespace trhost {

/// All of standard input. Ctrl-C ends the wait for more.
///
/// Threading: main thread only.
/// @throws Failure (kExit_Failed) when it cannot be read, is longer than inMaxBytes, or we are interrupted.
std::string ReadStandardInput(std::size_t inMaxBytes);

} // namespace trhost
