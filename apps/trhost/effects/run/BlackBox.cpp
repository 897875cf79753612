#include "BlackBox.h"

#include "BoxLayout.h"
#include "platform/OwnedMapping.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/TemporaryFile.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

namespace trhost::effects {
namespace {

constexpr std::string_view kExtension = ".box";
constexpr std::int64_t kSecondsUntilATemporaryIsLeftOver = 3600;

std::atomic<bool> sHasBox{false};
std::atomic<BoxHeader*> sHeader{nullptr}; // read in signal handlers

std::int64_t NanosecondsNow()
{
    const auto now = kiocore::threads::GetClock().WallTime().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::shared_ptr<platform::OwnedMapping> MakeBox(kiocore::UTF16View inFolder)
{
    const std::string folder = kiocore::filesupport::ToNative(inFolder);
    if (kiocore::filesupport::MakeFolders(folder) != 0) {
        throw kiocore::file_exception("make the folder", folder, errno);
    }
    const long long process = platform::GetProcessNumber();
    const std::int64_t start = NanosecondsNow();
    std::string path = folder + '/' + std::to_string(process) + '-' + std::to_string(start);
    auto mapping = std::make_shared<platform::OwnedMapping>(path.append(kExtension), sizeof(BoxLayout));
    auto* const box = new (mapping->Memory()) BoxLayout();
    BeginBox(*box, process, start, platform::GetBootID());
    mapping->Publish();
    return mapping;
}

std::shared_ptr<platform::OwnedMapping> MakeOnlyBox(kiocore::UTF16View inFolder)
{
    if (sHasBox.exchange(true)) {
        throw kiocore::kio_exception(
            "A process has one black box; the one that it has must go before another",
            kiocore::kError_BadArgument);
    }
    try {
        return MakeBox(inFolder);
    } catch (...) {
        sHasBox = false;
        throw;
    }
}

BoxLayout& BoxIn(const platform::OwnedMapping& inMapping)
{
    return *std::launder(static_cast<BoxLayout*>(inMapping.Memory()));
}

/// All paths of a folder whose name has the extension, or holds it before the mark of temporary files.
struct BoxPaths {
    std::vector<std::string> boxes;
    std::vector<std::string> temporaries;
};

BoxPaths FindBoxes(const std::string& inFolder)
{
    BoxPaths paths;
    std::error_code error;
    const std::string temporaryMark =
        std::string(kExtension) + std::string(kiocore::filesupport::kTemporaryFileMark);
    for (auto entry = std::filesystem::directory_iterator(inFolder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string& path = entry->path().native();
        if (path.ends_with(kExtension)) {
            paths.boxes.push_back(path);
        } else if (entry->path().filename().native().find(temporaryMark) != std::string::npos) {
            paths.temporaries.push_back(path);
        }
    }
    std::sort(paths.boxes.begin(), paths.boxes.end());
    return paths;
}

std::vector<Suspect> SuspectsIn(const std::string& inBytes)
{
    const auto box = BoxFromBytes(inBytes);
    if (!box || box->header.isCrashReported.load() != 0) {
        return {};
    }
    const bool machineWentDown = BootIDOf(box->header) != platform::GetBootID();
    std::vector<Suspect> suspects;
    for (const CallSlot& slot : box->table.slots) {
        CallSeen call;
        const SlotState state = ReadInnermostCall(slot, call);
        if (state == SlotState::kDamaged) {
            return {}; // whose word then should one take for the others
        }
        const auto isSame = [&call](const Suspect& suspect) { return suspect.matchName == call.name; };
        if (state == SlotState::kInCall && std::none_of(suspects.begin(), suspects.end(), isSame)) {
            suspects.push_back({call.name, machineWentDown});
        }
    }
    return suspects;
}

void RemoveLeftOverTemporaries(const std::vector<std::string>& inPaths)
{
    for (const std::string& path : inPaths) {
        // Young ones may be about to be locked.
        if (auto file = platform::AbandonedFile::Claim(path);
            file && file->AgeInSeconds() > kSecondsUntilATemporaryIsLeftOver) {
            file->Remove();
        }
    }
}

} // namespace

BlackBox::BlackBox(kiocore::UTF16View inFolder) : mMapping(MakeOnlyBox(inFolder))
{
    BoxLayout& box = BoxIn(*mMapping);
    mCalls = std::make_unique<RunningCalls>(CallKeeper::kBlackBox,
                                            std::shared_ptr<CallTable>(mMapping, &box.table));
    sHeader.store(&box.header, std::memory_order_release);
}

BlackBox::~BlackBox()
{
    sHeader.store(nullptr, std::memory_order_release);
    mMapping->Remove(); // threads that have a slot keep the memory
    sHasBox = false;
}

void BlackBox::MarkCrashReported() noexcept
{
    if (BoxHeader* const header = sHeader.load(std::memory_order_acquire)) {
        header->isCrashReported.store(1, std::memory_order_release);
    }
}

std::vector<Suspect> ReadSuspects(kiocore::UTF16View inFolder,
                                  const std::function<void(const std::vector<Suspect>&)>& inKeep)
{
    const BoxPaths paths = FindBoxes(kiocore::filesupport::ToNative(inFolder));
    std::vector<Suspect> all;
    for (const std::string& path : paths.boxes) {
        auto file = platform::AbandonedFile::Claim(path);
        if (!file) {
            continue;
        }
        const std::vector<Suspect> suspects = SuspectsIn(file->Read(sizeof(BoxLayout) + 1));
        if (inKeep && !suspects.empty()) {
            inKeep(suspects);
        }
        file->Remove();
        all.insert(all.end(), suspects.begin(), suspects.end());
    }
    RemoveLeftOverTemporaries(paths.temporaries);
    return all;
}

} // namespace trhost::effects
