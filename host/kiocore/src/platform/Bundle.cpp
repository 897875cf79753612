#include <kiocore/platform/Bundle.h>

#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/platform/Modules.h>

#include <link.h>

#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>

struct LoadedBundle {
    std::string resourceFolder;
};

namespace kiocore::platform {
namespace {

struct Search {
    std::string fileName; // "libName.so", versions may follow
    const void* address = nullptr;
};

int LookAtLibrary(dl_phdr_info* inInfo, std::size_t, void* ioSearch)
{
    auto& search = *static_cast<Search*>(ioSearch);
    const std::string_view path(inInfo->dlpi_name);
    const std::size_t separator = path.rfind('/');
    const std::string_view name = separator == std::string_view::npos ? path : path.substr(separator + 1);
    const std::string_view rest = name.substr(std::min(name.size(), search.fileName.size()));
    if (!name.starts_with(search.fileName) || !(rest.empty() || rest.starts_with('.'))) {
        return 0;
    }
    for (int segment = 0; segment < inInfo->dlpi_phnum; ++segment) {
        if (inInfo->dlpi_phdr[segment].p_type == PT_LOAD) {
            search.address =
                reinterpret_cast<const void*>(inInfo->dlpi_addr + inInfo->dlpi_phdr[segment].p_vaddr);
            return 1;
        }
    }
    return 0;
}

} // namespace

CFBundleRef BundleWithIdentifier(std::string_view inIdentifier)
{
    KIO_HOST_CALL("CFBundleGetBundleWithIdentifier", inIdentifier);
    static std::mutex lock;
    static auto& bundles = *new std::map<std::string, std::unique_ptr<LoadedBundle>, std::less<>>;
    {
        const std::lock_guard guard(lock);
        if (const auto known = bundles.find(inIdentifier); known != bundles.end()) {
            return known->second.get();
        }
    }
    const std::size_t dot = inIdentifier.rfind('.');
    const std::string name(inIdentifier.substr(dot == std::string_view::npos ? 0 : dot + 1));
    Search search{"lib" + name + ".so"};
    if (name.empty() || dl_iterate_phdr(&LookAtLibrary, &search) == 0) {
        return nullptr;
    }
    auto bundle = std::make_unique<LoadedBundle>(LoadedBundle{ResourceFolder(search.address, name)});
    const std::lock_guard guard(lock);
    // Another thread may have been faster; then its bundle is the one.
    return bundles.emplace(std::string(inIdentifier), std::move(bundle)).first->second.get();
}

} // namespace kiocore::platform

namespace kiocore::utility {
namespace {

struct CloseFile {
    void operator()(std::FILE* inFile) const { std::fclose(inFile); }
};

} // namespace

bool GetBinaryFromModule(CFBundleRef inBundle, UTF16View inName, UTF16View inType,
                         std::vector<std::byte>& outBytes)
{
    KIO_HOST_CALL("kiocore::utility::GetBinaryFromModule",
                  inBundle ? inBundle->resourceFolder : std::string(), inName, inType);
    const auto fail = [&](const std::string& inReason) {
        debug::Trace(1, "Resources",
                     "No resource " + ToUTF8(inName) + "." + ToUTF8(inType) + ": " + inReason);
        return false;
    };
    if (!inBundle) {
        return fail("its library is not loaded");
    }
    if (inName.empty() || inName.find(u'/') != UTF16View::npos || inType.find(u'/') != UTF16View::npos) {
        return fail("expected a name without a separator");
    }
    const std::string path = inBundle->resourceFolder + "/" + ToUTF8(inName) + "." + ToUTF8(inType);
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
    if (!file) {
        return fail("cannot open " + path);
    }
    std::vector<std::byte> bytes;
    constexpr std::size_t kStep = 1 << 18;
    for (std::size_t got = kStep; got == kStep;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + kStep);
        got = std::fread(bytes.data() + before, 1, kStep, file.get());
        bytes.resize(before + got);
    }
    if (std::ferror(file.get())) {
        return fail("cannot read " + path);
    }
    outBytes = std::move(bytes);
    return true;
}

} // namespace kiocore::utility
