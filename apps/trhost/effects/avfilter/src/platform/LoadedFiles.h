#pragma once

#include <string>

namespace trhost::effects::avfilter {

/// The file that the code or data at an address was loaded from: absolute, links resolved. Empty when there
/// is none.
std::string FileAt(const void* inAddress);

/// The same path with links resolved; as it is when there is no such file.
std::string Resolved(const std::string& inPath);

} // namespace trhost::effects::avfilter
