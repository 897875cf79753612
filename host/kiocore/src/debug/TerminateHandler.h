#pragma once

namespace kiocore::debug {

/// What std::terminate does while crash handling is installed: one line on standard error with the type and
/// text of the exception, as the default handler tells them in two, then abort, so that the process crashes
/// like any other. A program that had a handler of its own keeps it: that one ends in abort as well.
///
/// Threading: as installing crash handling.
void InstallTerminateHandler() noexcept;
void UninstallTerminateHandler() noexcept;

} // namespace kiocore::debug
