#include "CrashHistory.h"

#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/DocumentLock.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>
#include <kiocore/serialization/Serializer.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <utility>

namespace trhost::effects {
namespace {

using kiocore::UTF16String;
using kiocore::config::Localizer;
using kiocore::serialization::JSON;
using kiocore::serialization::JSONObject;

constexpr int kVersion = 1;
constexpr kiocore::utility::Guid kLockID(kiocore::utility::Guid::Bytes{
    0x4b, 0x1f, 0xe0, 0x92, 0x7d, 0x35, 0x46, 0x8e, 0x91, 0xc2, 0x3a, 0x58, 0xd6, 0x0f, 0xb7, 0x24});

/// By the Gregorian calendar and without leap seconds, as ISO 8601 has it.
std::string Date(std::chrono::system_clock::time_point inTime)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(inTime);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(seconds - day);
    char text[40];
    std::snprintf(text, sizeof(text), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::string Now()
{
    return Date(kiocore::threads::GetClock().WallTime());
}

CrashHistoryEntry& EntryOf(std::vector<CrashHistoryEntry>& ioEntries, const std::string& inMatchName)
{
    const auto found = std::find_if(ioEntries.begin(), ioEntries.end(),
                                    [&](const auto& entry) { return entry.matchName == inMatchName; });
    if (found != ioEntries.end()) {
        return *found;
    }
    ioEntries.emplace_back().matchName = inMatchName;
    return ioEntries.back();
}

std::string ReadFile(const UTF16String& inPath)
{
    kiocore::filesupport::IPlatformByteStream stream(inPath);
    std::string bytes(stream.Size(), '\0');
    bytes.resize(stream.ReadBlock(bytes.data(), bytes.size()));
    return bytes;
}

} // namespace
} // namespace trhost::effects

namespace kiocore::serialization {

template <>
struct JSONConvert<trhost::effects::CrashHistoryEntry> {
    static JSON ToJSON(const trhost::effects::CrashHistoryEntry& inValue)
    {
        JSONObject object;
        AddMember(object, "matchName", inValue.matchName);
        AddMember(object, "displayName", inValue.displayName);
        AddMember(object, "version", inValue.version);
        AddMember(object, "crashes", inValue.crashes);
        AddMember(object, "suspicions", inValue.suspicions);
        AddMember(object, "lastDate", inValue.lastDate);
        AddMember(object, "lastSessionID", inValue.lastSessionID);
        AddMember(object, "wasShown", inValue.wasShown);
        return object;
    }
    static trhost::effects::CrashHistoryEntry FromJSON(const JSON& inValue)
    {
        const JSONObject& object = AsObject(inValue);
        trhost::effects::CrashHistoryEntry value;
        value.matchName = GetMember<std::string>(object, "matchName");
        ReadMember(object, "displayName", value.displayName);
        ReadMember(object, "version", value.version);
        ReadMember(object, "crashes", value.crashes);
        ReadMember(object, "suspicions", value.suspicions);
        ReadMember(object, "lastDate", value.lastDate);
        ReadMember(object, "lastSessionID", value.lastSessionID);
        ReadMember(object, "wasShown", value.wasShown);
        return value;
    }
};

} // namespace kiocore::serialization

namespace trhost::effects {
namespace {

/// @throws kio_exception when a newer version wrote it, std::exception when it is damaged.
std::vector<CrashHistoryEntry> EntriesFromText(const std::string& inText, const UTF16String& inFile)
{
    const JSON document = kiocore::serialization::GetJSONFromUTF8String(inText);
    const JSONObject& object = kiocore::serialization::AsObject(document);
    const int version = kiocore::serialization::GetMember<int>(object, "version");
    if (version > kVersion) {
        throw kiocore::kio_exception(
            Localizer::Format(
                Localizer::GetText("$$$/Halcyon/TrHost/Crashes/NewerHistory=The crash history @0 has version "
                                   "@1; this program reads up to @2.#{@0: file, @1 and @2: numbers}"),
                {inFile, kiocore::utility::DecimalText(static_cast<unsigned>(version)),
                 kiocore::utility::DecimalText(kVersion)}),
            kiocore::kError_DamagedData);
    }
    return kiocore::serialization::GetMember<std::vector<CrashHistoryEntry>>(object, "entries");
}

std::string TextOf(const std::vector<CrashHistoryEntry>& inEntries)
{
    JSONObject document;
    kiocore::serialization::AddMember(document, "version", kVersion);
    kiocore::serialization::AddMember(document, "entries", inEntries);
    return kiocore::serialization::GetJSONUTF8String(document, true) + '\n';
}

void SortNewestFirst(std::vector<CrashHistoryEntry>& ioEntries)
{
    std::stable_sort(ioEntries.begin(), ioEntries.end(), [](const auto& a, const auto& b) {
        return a.lastDate != b.lastDate ? a.lastDate > b.lastDate : a.matchName < b.matchName;
    });
}

} // namespace

CrashHistory::CrashHistory(UTF16String inFile, Tell inTell)
    : mFile(std::move(inFile)), mLockFile(mFile + u".lock"), mTell(std::move(inTell))
{}

void CrashHistory::AddCrash(const CrashRecord& inCrash)
{
    Change([&](List& ioEntries) {
        CrashHistoryEntry& entry = EntryOf(ioEntries, inCrash.matchName);
        entry.displayName = inCrash.displayName;
        entry.version = inCrash.version;
        entry.lastSessionID = inCrash.sessionID;
        ++entry.crashes;
        entry.lastDate = Now();
        entry.wasShown = false;
        return true;
    });
}

void CrashHistory::AddSuspect(const std::string& inMatchName)
{
    Change([&](List& ioEntries) {
        CrashHistoryEntry& entry = EntryOf(ioEntries, inMatchName);
        ++entry.suspicions;
        entry.lastDate = Now();
        entry.wasShown = false;
        return true;
    });
}

std::vector<CrashHistoryEntry> CrashHistory::Entries()
{
    List entries;
    // Through a change that changes nothing only for what has to be set aside; else without a lock or a lock
    // file, as saving replaces the file in one step.
    UTF16String problem;
    entries = Load(problem);
    if (!problem.empty()) {
        Change([&](List& ioEntries) {
            entries = ioEntries;
            return false;
        });
    }
    SortNewestFirst(entries);
    return entries;
}

void CrashHistory::MarkShown(const std::vector<CrashHistoryEntry>& inShown)
{
    Change([&](List& ioEntries) {
        bool changed = false;
        for (CrashHistoryEntry& entry : ioEntries) {
            const auto isSame = [&entry](const CrashHistoryEntry& shown) {
                return shown.matchName == entry.matchName && shown.crashes == entry.crashes &&
                       shown.suspicions == entry.suspicions;
            };
            if (!entry.wasShown && std::any_of(inShown.begin(), inShown.end(), isSame)) {
                entry.wasShown = true;
                changed = true;
            }
        }
        return changed;
    });
}

bool CrashHistory::Clear(const std::string& inMatchName)
{
    return Change([&](List& ioEntries) {
        return std::erase_if(ioEntries, [&](const auto& entry) { return entry.matchName == inMatchName; }) >
               0;
    });
}

bool CrashHistory::Change(const std::function<bool(List&)>& inChange)
{
    UTF16String told;
    bool changed = false;
    try {
        changed = ChangeLocked(inChange, told);
    } catch (...) {
        TellOf(told); // that the file was set aside is true all the same
        throw;
    }
    TellOf(told);
    return changed;
}

bool CrashHistory::ChangeLocked(const std::function<bool(List&)>& inChange, UTF16String& outTold)
{
    // Held while the file is read and saved: that is what it is for.
    const kiocore::filesupport::ScDocumentLock lock(mLockFile, kLockID);
    UTF16String problem;
    List entries = Load(problem);
    if (!problem.empty()) {
        outTold = SetAside(kiocore::utility::ToUTF8(problem));
    }
    const bool changed = inChange(entries);
    if (changed) {
        Save(entries);
    }
    return changed;
}

/// @param outProblem  why the file cannot be understood; it counts as empty then.
CrashHistory::List CrashHistory::Load(UTF16String& outProblem) const
{
    std::string text;
    try {
        text = ReadFile(mFile);
    } catch (const kiocore::file_exception& exception) {
        if (exception.Errno() == ENOENT) {
            return {};
        }
        throw;
    }
    try {
        return EntriesFromText(text, mFile);
    } catch (const kiocore::kio_exception&) {
        throw;
    } catch (const std::exception& exception) {
        outProblem = kiocore::utility::ToUTF16(exception.what());
        return {};
    }
}

void CrashHistory::Save(const List& inEntries) const
{
    const kiocore::filesupport::SaveResult saved = kiocore::filesupport::SaveFileAtomically(
        mFile, TextOf(inEntries), kiocore::filesupport::Durability::kFull);
    if (saved.result != 0) {
        throw kiocore::file_exception("save", kiocore::utility::ToUTF8(mFile), saved.errorNumber);
    }
}

/// @return what to tell of it.
/// @throws file_exception: then the file stays where it is, and nothing is saved over it.
UTF16String CrashHistory::SetAside(const std::string& inReason) const
{
    const std::string from = kiocore::filesupport::ToNative(mFile);
    std::string to = from + ".damaged-" + Now();
    // An earlier one of the same second keeps its name, and its contents.
    int result = kiocore::filesupport::GetFileCalls().Link(from.c_str(), to.c_str());
    for (int number = 2; result != 0 && errno == EEXIST; ++number) {
        to = from + ".damaged-" + Now() + '-' + std::to_string(number);
        result = kiocore::filesupport::GetFileCalls().Link(from.c_str(), to.c_str());
    }
    if (result != 0 ? kiocore::filesupport::GetFileCalls().Rename(from.c_str(), to.c_str()) != 0
                    : kiocore::filesupport::GetFileCalls().Unlink(from.c_str()) != 0) {
        throw kiocore::file_exception("set aside the damaged crash history", from, errno);
    }
    return Localizer::Format(
        Localizer::GetText("$$$/Halcyon/TrHost/Crashes/DamagedHistory=The crash history @0 is damaged (@1). "
                           "It was kept as @2, and a new one begun.#{@0 and @2: files, @1: the reason}"),
        {mFile, kiocore::utility::ToUTF16(inReason), kiocore::filesupport::FromNative(to)});
}

void CrashHistory::TellOf(const UTF16String& inProblem) const
{
    if (inProblem.empty()) {
        return;
    }
    kiocore::debug::Trace(1, "Effects", inProblem);
    if (mTell) {
        mTell(inProblem);
    }
}

} // namespace trhost::effects
