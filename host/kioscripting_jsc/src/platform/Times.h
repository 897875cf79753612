#pragma once

namespace kioscripting_jsc::platform {

/// Processor time of the calling thread, in seconds.
double ThreadSeconds() noexcept;
/// For differences, in seconds.
double SteadySeconds() noexcept;

} // namespace kioscripting_jsc::platform
