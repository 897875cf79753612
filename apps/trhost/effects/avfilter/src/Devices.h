#pragma once

#include <string>

namespace trhost::effects::avfilter {

/// Why filters of a kind of device cannot run here, one line: no such device, found out by opening one (once
/// for each kind and process), or one that is there and not served.
///
/// Threading: any thread.
std::string ReasonWithoutDevice(const char* inKind);

} // namespace trhost::effects::avfilter
