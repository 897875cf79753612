#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kiocore::utility {

using RegistryValue = std::variant<std::uint32_t, std::string>;
using RegistryValues = std::map<std::string, RegistryValue, std::less<>>;

inline constexpr char kRegistrySeparator = '\\';

/// @return false when the path has an empty name in it or is no UTF-8. A separator at the end is dropped.
bool NormalizeRegistryPath(std::string_view inPath, std::string& outPath);
/// Whether a registry file can hold the text.
bool IsRegistryText(std::string_view inText);

/// A change that can be made again on top of what others did meanwhile.
struct RegistryChange {
    enum class Kind { kCreateKey, kDeleteKey, kSetValue, kDeleteValue };
    enum class Outcome { kChanged, kUnchanged, kNotThere };

    Kind kind;
    std::string path; // normalized
    std::string name = {};
    RegistryValue value = {};
};

/// All keys with their values. The keys above a key are there whenever it is; the root always is.
///
/// Threading: a plain value.
class RegistryTree {
public:
    RegistryTree() { mKeys.try_emplace(""); }

    /// Null when there is no such key.
    const RegistryValues* Find(std::string_view inPath) const;
    std::vector<std::string> SubKeyNames(std::string_view inPath) const;
    RegistryChange::Outcome Apply(const RegistryChange& inChange);

    friend std::string FormatRegistry(const RegistryTree& inTree);
    friend RegistryTree ParseRegistry(std::string_view inText);

private:
    /// @return whether anything was made.
    bool Create(std::string_view inPath);
    bool Delete(const std::string& inPath);

    // By path: what lies below "a" is the run of keys that begin with "a\".
    std::map<std::string, RegistryValues, std::less<>> mKeys;
};

/// The file's form, for people too: each key by its whole path, with numbers and texts as its values.
///
///     {
///       "CurrentUser": {
///         "Software": {},
///         "Software\\Halcyon": {
///           "Path": "text",
///           "Version": 3
///         }
///       },
///       "RegistryVersion": 1
///     }
std::string FormatRegistry(const RegistryTree& inTree);
/// @throws std::exception (its text names the place) when it is no registry, or has what writing it again
/// would
///     lose.
RegistryTree ParseRegistry(std::string_view inText);

} // namespace kiocore::utility
