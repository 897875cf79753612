#include "RegistryTree.h"

#include "../serialization/JSONText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/serialization/JSON.h>

#include <limits>

namespace kiocore::utility {
namespace {

using serialization::JSON;
using serialization::JSONObject;

constexpr const char* kRootName = "CurrentUser";
constexpr const char* kVersionName = "RegistryVersion";
constexpr std::uint32_t kNewestVersion = 1;

/// Reads one member of an object, so that a failure names its place.
template <typename Reader>
auto ReadMember(std::string_view inName, const JSON& inValue, Reader inReader)
{
    try {
        return inReader(inValue);
    } catch (serialization::bad_cast_exception& error) {
        error.IsWithinMember(inName);
        throw;
    }
}

RegistryValue AsRegistryValue(const JSON& inValue)
{
    if (inValue.type() == typeid(std::string)) {
        return serialization::AsText(inValue);
    }
    return static_cast<std::uint32_t>(
        serialization::AsUInt64(inValue, std::numeric_limits<std::uint32_t>::max()));
}

RegistryValues AsRegistryValues(const JSON& inValue)
{
    RegistryValues values;
    for (const auto& [name, value] : serialization::AsObject(inValue)) {
        values.emplace(name, ReadMember(name, value, AsRegistryValue));
    }
    return values;
}

JSON AsJSON(const RegistryValues& inValues)
{
    JSONObject values;
    for (const auto& [name, value] : inValues) {
        std::visit([&, &name = name](const auto& inAny) { values.emplace(name, inAny); }, value);
    }
    return values;
}

} // namespace

bool IsRegistryText(std::string_view inText)
{
    return serialization::FindBadUTF8(inText, serialization::Surrogates::kAcceptLone) ==
           std::string_view::npos;
}

bool NormalizeRegistryPath(std::string_view inPath, std::string& outPath)
{
    std::string_view path = inPath;
    if (path.ends_with(kRegistrySeparator)) {
        path.remove_suffix(1);
        if (path.empty()) {
            return false;
        }
    }
    const bool hasEmptyName = path.starts_with(kRegistrySeparator) || path.ends_with(kRegistrySeparator) ||
                              path.find("\\\\") != std::string_view::npos;
    if (hasEmptyName || !IsRegistryText(path)) {
        return false;
    }
    outPath = path;
    return true;
}

const RegistryValues* RegistryTree::Find(std::string_view inPath) const
{
    const auto found = mKeys.find(inPath);
    return found == mKeys.end() ? nullptr : &found->second;
}

std::vector<std::string> RegistryTree::SubKeyNames(std::string_view inPath) const
{
    std::string below(inPath);
    if (!below.empty()) {
        below += kRegistrySeparator;
    }
    std::vector<std::string> names;
    for (auto at = mKeys.lower_bound(below); at != mKeys.end() && at->first.starts_with(below); ++at) {
        const std::string_view name = std::string_view(at->first).substr(below.size());
        if (!name.empty() && name.find(kRegistrySeparator) == std::string_view::npos) {
            names.emplace_back(name);
        }
    }
    return names;
}

bool RegistryTree::Create(std::string_view inPath)
{
    bool made = false;
    for (std::size_t end = 0; end < inPath.size(); ++end) {
        end = std::min(inPath.find(kRegistrySeparator, end), inPath.size());
        made = mKeys.try_emplace(std::string(inPath.substr(0, end))).second || made;
    }
    return made;
}

bool RegistryTree::Delete(const std::string& inPath)
{
    const auto key = mKeys.find(inPath);
    if (inPath.empty() || key == mKeys.end()) {
        return false;
    }
    mKeys.erase(key);
    const std::string below = inPath + kRegistrySeparator;
    const auto first = mKeys.lower_bound(below);
    auto end = first;
    while (end != mKeys.end() && end->first.starts_with(below)) {
        ++end;
    }
    mKeys.erase(first, end);
    return true;
}

RegistryChange::Outcome RegistryTree::Apply(const RegistryChange& inChange)
{
    using Outcome = RegistryChange::Outcome;
    const auto key = mKeys.find(inChange.path);
    switch (inChange.kind) {
    case RegistryChange::Kind::kCreateKey:
        return Create(inChange.path) ? Outcome::kChanged : Outcome::kUnchanged;
    case RegistryChange::Kind::kDeleteKey:
        return Delete(inChange.path) ? Outcome::kChanged : Outcome::kNotThere;
    case RegistryChange::Kind::kSetValue: {
        if (key == mKeys.end()) {
            return Outcome::kNotThere;
        }
        const auto [value, isNew] = key->second.try_emplace(inChange.name, inChange.value);
        if (!isNew && value->second == inChange.value) {
            return Outcome::kUnchanged;
        }
        value->second = inChange.value;
        return Outcome::kChanged;
    }
    case RegistryChange::Kind::kDeleteValue:
        return key != mKeys.end() && key->second.erase(inChange.name) > 0 ? Outcome::kChanged
                                                                          : Outcome::kNotThere;
    }
    return Outcome::kNotThere;
}

std::string FormatRegistry(const RegistryTree& inTree)
{
    JSONObject keys;
    for (const auto& [path, values] : inTree.mKeys) {
        if (!path.empty() || !values.empty()) {
            keys.emplace(path, AsJSON(values));
        }
    }
    JSONObject document;
    document.emplace(kVersionName, kNewestVersion);
    document.emplace(kRootName, std::move(keys));
    return serialization::GetJSONUTF8String(document, true) + "\n";
}

RegistryTree ParseRegistry(std::string_view inText)
{
    RegistryTree tree;
    if (inText.empty()) {
        return tree;
    }
    const auto refuse = [](const std::string& inFound, const std::string& inExpected) {
        throw kio_exception("found " + inFound + ", expected " + inExpected, kError_DamagedData);
    };
    const JSON document = serialization::GetJSONFromUTF8String(inText);
    bool hasVersion = false;
    for (const auto& [name, value] : serialization::AsObject(document)) {
        if (name == kVersionName) {
            hasVersion = true;
            const std::uint64_t version = ReadMember(name, value, [](const JSON& inVersion) {
                return serialization::AsUInt64(inVersion, std::numeric_limits<std::uint64_t>::max());
            });
            if (version == 0 || version > kNewestVersion) {
                refuse("version " + std::to_string(version), "1 to " + std::to_string(kNewestVersion));
            }
        } else if (name == kRootName) {
            ReadMember(name, value, [&](const JSON& inKeys) {
                for (const auto& [path, values] : serialization::AsObject(inKeys)) {
                    std::string normal;
                    if (!NormalizeRegistryPath(path, normal) || normal != path) {
                        refuse("a key " + serialization::Quoted(path), "names joined by single backslashes");
                    }
                    tree.Create(path);
                    tree.mKeys.find(path)->second = ReadMember(path, values, AsRegistryValues);
                }
            });
        } else {
            refuse("a member " + serialization::Quoted(name),
                   std::string("only ") + kRootName + " and " + kVersionName);
        }
    }
    if (!hasVersion) {
        refuse("no " + std::string(kVersionName), "a number");
    }
    return tree;
}

} // namespace kiocore::utility
