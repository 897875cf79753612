#include "support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace support {

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "trtest-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        throw std::runtime_error("cannot make a temporary folder like " + name);
    }
    mPath = std::filesystem::canonical(name);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    // Tests take permissions away; give them back so that everything can be removed.
    for (auto it = std::filesystem::recursive_directory_iterator(
             mPath, std::filesystem::directory_options::skip_permission_denied, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
        if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
        }
    }
    std::filesystem::remove_all(mPath, ignored);
}

kiocore::UTF16String TemporaryFolder::UTF16(std::string_view inName) const
{
    return support::UTF16(inName.empty() ? mPath : mPath / inName);
}

kiocore::UTF16String UTF16(const std::filesystem::path& inPath)
{
    return kiocore::utility::ToUTF16(inPath.native());
}

kiocore::UTF16String WriteFile(const std::filesystem::path& inPath, std::string_view inBytes)
{
    std::filesystem::create_directories(inPath.parent_path());
    std::ofstream file(inPath, std::ios::binary);
    file.write(inBytes.data(), static_cast<std::streamsize>(inBytes.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + inPath.string());
    }
    return UTF16(inPath);
}

std::string ReadFile(const std::filesystem::path& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + inPath.string());
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace support
