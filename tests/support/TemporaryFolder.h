#pragma once

#include <kiocore/utility/UTF16String.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

/// A fresh folder below the system's temporary one, removed with all it holds when this goes.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }
    std::filesystem::path operator/(std::string_view inName) const { return mPath / inName; }
    /// The host's form of a path below this folder, or of the folder itself.
    kiocore::UTF16String UTF16(std::string_view inName = {}) const;

private:
    std::filesystem::path mPath;
};

/// Writes a file, making its folder; returns its path in the host's form.
kiocore::UTF16String WriteFile(const std::filesystem::path& inPath, std::string_view inBytes);
std::string ReadFile(const std::filesystem::path& inPath);
kiocore::UTF16String UTF16(const std::filesystem::path& inPath);

} // namespace support
