#pragma once

namespace trhost {

/// The user wants the program to start again once the command is over: main does it, with the same arguments.
///
/// Threading: main thread.
void RequestRestart();
bool IsRestartRequested();

} // namespace trhost
