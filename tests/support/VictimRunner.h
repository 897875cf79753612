#pragma once

#include "support/TemporaryFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace support {

/// Runs programs that are expected to crash: in an empty working folder, without core dumps, killed after ten
/// seconds. Sanitizers abort where they find something.
class VictimRunner {
public:
    /// A path for the program to write to; nothing is there.
    std::string ReportPath() const { return mFolder / "report"; }

    /// What came of it: "signal 11", "exit 3", "hung".
    std::string Run(const std::string& inProgram, std::vector<std::string> inArguments);
    std::optional<std::string> Report() const;
    std::string StandardError() const;
    /// What it left in its working folder.
    std::vector<std::string> Litter() const;

private:
    TemporaryFolder mFolder;
};

} // namespace support
