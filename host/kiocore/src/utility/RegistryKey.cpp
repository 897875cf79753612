#include <kiocore/utility/RegistryKey.h>

#include "RegistryStore.h"

#include <kiocore/debug/Trace.h>

#include <exception>

namespace kiocore::utility {
namespace {

using Kind = RegistryChange::Kind;

bool NormalizeBelow(RegistryRootKey inRoot, std::string_view inPath, std::string& outPath)
{
    if (inRoot != kRegistryRoot_CurrentUser) {
        debug::Trace(1, "Registry",
                     "Registry root " + std::to_string(inRoot) + " does not exist; expected 0");
        return false;
    }
    if (!NormalizeRegistryPath(inPath, outPath)) {
        debug::Trace(1, "Registry",
                     "Registry key " + debug::TraceArgument(inPath).Text() +
                         " is refused; expected names in UTF-8 joined by single backslashes");
        return false;
    }
    return true;
}

template <typename T>
int GetValue(RegistryStore* inStore, const std::string& inPath, std::string_view inName, T& outValue)
{
    const RegistrySnapshot view = inStore ? inStore->View() : nullptr;
    const RegistryValues* const values = view ? view->Find(inPath) : nullptr;
    if (!values) {
        return -1;
    }
    const auto found = values->find(inName);
    if (found == values->end() || !std::holds_alternative<T>(found->second)) {
        return -1;
    }
    outValue = std::get<T>(found->second);
    return 0;
}

} // namespace

void SetRegistryFile(const UTF16String& inFile)
{
    KIO_HOST_CALL("kiocore::utility::SetRegistryFile", inFile);
    RegistryStore::SetDefault(inFile);
}

UTF16String GetRegistryFile()
{
    KIO_HOST_CALL("kiocore::utility::GetRegistryFile");
    return RegistryStore::GetDefault()->File();
}

int RegistryKey::Open(RegistryRootKey inRoot, std::string_view inPath)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::Open", static_cast<int>(inRoot), inPath);
    std::string path;
    if (!NormalizeBelow(inRoot, inPath, path)) {
        return -1;
    }
    auto store = RegistryStore::GetDefault();
    const RegistrySnapshot view = store->View();
    if (!view || !view->Find(path)) {
        return -1;
    }
    mStore = std::move(store);
    mPath = std::move(path);
    return 0;
}

int RegistryKey::Create(RegistryRootKey inRoot, std::string_view inPath)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::Create", static_cast<int>(inRoot), inPath);
    std::string path;
    if (!NormalizeBelow(inRoot, inPath, path)) {
        return -1;
    }
    auto store = RegistryStore::GetDefault();
    if (store->Change({Kind::kCreateKey, path}) != 0) {
        return -1;
    }
    mStore = std::move(store);
    mPath = std::move(path);
    return 0;
}

int RegistryKey::SetUInt32Value(std::string_view inName, std::uint32_t inValue)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::SetUInt32Value", inName, inValue);
    return mStore ? mStore->Change({Kind::kSetValue, mPath, std::string(inName), inValue}) : -1;
}

int RegistryKey::GetUInt32Value(std::string_view inName, std::uint32_t& outValue) const
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::GetUInt32Value", inName);
    return GetValue(mStore.get(), mPath, inName, outValue);
}

int RegistryKey::SetStringValue(std::string_view inName, std::string_view inValue)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::SetStringValue", inName, inValue);
    return mStore ? mStore->Change({Kind::kSetValue, mPath, std::string(inName), std::string(inValue)}) : -1;
}

int RegistryKey::GetStringValue(std::string_view inName, std::string& outValue) const
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::GetStringValue", inName);
    return GetValue(mStore.get(), mPath, inName, outValue);
}

int RegistryKey::DeleteValue(std::string_view inName)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::DeleteValue", inName);
    return mStore ? mStore->Change({Kind::kDeleteValue, mPath, std::string(inName)}) : -1;
}

int RegistryKey::DeleteKey(std::string_view inPath)
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::DeleteKey", inPath);
    std::string below;
    if (!mStore || inPath.empty() || !NormalizeBelow(kRegistryRoot_CurrentUser, inPath, below)) {
        return -1;
    }
    return mStore->Change({Kind::kDeleteKey, mPath.empty() ? below : mPath + kRegistrySeparator + below});
}

int RegistryKey::GetValueNames(std::vector<std::string>& outNames) const
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::GetValueNames");
    const RegistrySnapshot view = mStore ? mStore->View() : nullptr;
    const RegistryValues* const values = view ? view->Find(mPath) : nullptr;
    if (!values) {
        return -1;
    }
    std::vector<std::string> names;
    for (const auto& [name, value] : *values) {
        names.push_back(name);
    }
    outNames = std::move(names);
    return 0;
}

int RegistryKey::GetSubKeyNames(std::vector<std::string>& outNames) const
{
    KIO_HOST_CALL("kiocore::utility::RegistryKey::GetSubKeyNames");
    const RegistrySnapshot view = mStore ? mStore->View() : nullptr;
    if (!view || !view->Find(mPath)) {
        return -1;
    }
    outNames = view->SubKeyNames(mPath);
    return 0;
}

ScRegistryBatch::ScRegistryBatch(filesupport::Durability inDurability)
{
    if (!RegistryBatchState::OfThisThread()) {
        mState = std::make_unique<RegistryBatchState>(RegistryStore::GetDefault(), inDurability);
    }
}

ScRegistryBatch::~ScRegistryBatch()
{
    try {
        Finish();
    } catch (const std::exception& error) {
        debug::Trace(1, "Registry", std::string("Registry changes are lost: ") + error.what());
    }
}

int ScRegistryBatch::Finish()
{
    return mState ? mState->Finish() : 0;
}

} // namespace kiocore::utility
