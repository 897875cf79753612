#include <TR/EffectPluginManagerCrashDetection.h>

#include <kioappsupport/Feature.h>
#include <kiocore/config/Errors.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/debug/CrashContext.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/debug/DebugDatabase.h>
#include <kiocore/exceptions/MachineException.h>
#include <kiocore/exceptions/Trail.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kiocore/utility/Dictionary.h>
#include <kiocore/utility/ExpiringEntryMap.h>
#include <kiocore/utility/FileUtils.h>
#include <kiocore/utility/PermanentText.h>
#include <kiocore/utility/TimeStampable.h>
#include <kiocore/utility/UsageLogger.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <utility>

namespace TR {

using kiocore::ImmutableString;
using kiocore::UTF16String;
using kiocore::debug::CachedDebugBool;
using kiocore::debug::DebugDatabase;
using kiocore::filesupport::Dir;
using kiocore::filesupport::File;
using kiocore::filesupport::IPlatformByteStream;
using kiocore::filesupport::OPlatformByteStream;
using kiocore::utility::Dictionary;
using kiocore::utility::ExpiringEntryMap;
using kiocore::utility::ExpiringEntryMapSettings;
using kiocore::utility::FileUtils;
using kiocore::utility::UsageLogger;

namespace {

namespace async = kiocore::async;
namespace debug = kiocore::debug;
namespace exceptions = kiocore::exceptions;
namespace feature = kioappsupport::feature;
namespace threads = kiocore::threads;

constexpr const char* kSource = "EffectPluginManagerCrashDetection";

const feature::BetaFeature
    sCrashDetection(kPluginManagerCrashDetectionFeature,
                    "$$$/VireoPro/Mezzanine/PluginManagerCrashDetection/FeatureName=Crash Detection",
                    "$$$/VireoPro/Mezzanine/PluginManagerCrashDetection/FeatureDesc=Crash Detection",
                    feature::FeatureStage::kBeta, feature::VisibilityInAllClientApps::kVisible,
                    feature::EnablementChanges::kAfterRestart, feature::DefaultEnablement::kOff);

/// Whether detection is on, read once for the process. Not a function-local static: the crash handler asks
/// too, and must not run into its guard.
enum class Detection { kUnknown, kOff, kOn };
std::atomic<Detection> sDetection{Detection::kUnknown};

bool ReadDetection()
{
    // Two threads that ask at once agree, whatever is set meanwhile: the first answer stays.
    Detection expected = Detection::kUnknown;
    const bool isOn = feature::IsFeatureEnabled(kPluginManagerCrashDetectionFeature);
    sDetection.compare_exchange_strong(expected, isOn ? Detection::kOn : Detection::kOff);
    return sDetection.load() == Detection::kOn;
}

bool IsDetectionOn()
{
    const Detection detection = sDetection.load(std::memory_order_relaxed);
    return detection == Detection::kUnknown ? ReadDetection() : detection == Detection::kOn;
}

UTF16String CrashFilePath()
{
    UTF16String name = kiocore::config::versioninfo::GetAppShortName();
    std::erase_if(name, [](char16_t unit) { return unit == u' ' || unit == u'(' || unit == u')'; });
    return FileUtils::BuildPathSpec(Dir::PrefDir().FullPath(), name + u"Crash.json");
}

/// The crash file's path, made once for the process in both forms; never destroyed, as the process may crash
/// while it ends.
struct CrashFile {
    UTF16String path;
    std::string nativePath;
};
std::atomic<const CrashFile*> sCrashFile{nullptr};

const CrashFile& GetCrashFile()
{
    static const CrashFile* const file = [] {
        UTF16String path = CrashFilePath();
        std::string native = kiocore::filesupport::ToNative(path);
        return new CrashFile{std::move(path), std::move(native)};
    }();
    sCrashFile.store(file, std::memory_order_release);
    return *file;
}

/// What a crash handler must find ready, as it can make nothing itself.
bool PrepareWriter() noexcept
{
    if (debug::IsHandlingCrash()) {
        return sDetection.load() == Detection::kOn && sCrashFile.load() != nullptr;
    }
    try {
        if (!IsDetectionOn()) {
            return false;
        }
        GetCrashFile();
        return true;
    } catch (...) {
        return false; // no memory, or no preferences folder: there is nowhere to write
    }
}

/// A plug-in's serialized description.
class MapValue final : public kiocore::utility::TimeStampable {
public:
    explicit MapValue(ImmutableString inJSON) : mJSON(std::move(inJSON)) {}
    const ImmutableString& JSON() const noexcept { return mJSON; }

private:
    const ImmutableString mJSON;
};
using SerializedMetadataMap = ExpiringEntryMap<ImmutableString, MapValue>;

SerializedMetadataMap& GetSerializedMetadataMap()
{
    static const std::shared_ptr<SerializedMetadataMap> map = [] {
        ExpiringEntryMapSettings settings;
        settings.keptRegardlessOfAge = 0;
        settings.age = std::chrono::seconds(300);
        settings.passDelay = std::chrono::seconds(10);
        settings.lockLimit = std::chrono::milliseconds(60000);
        return SerializedMetadataMap::Create(settings, kiocore::utility::CreateExpiringEntryMapExecutor());
    }();
    return *map;
}

/// Effects that everybody who tries the detection has.
bool IsForTesting(const ImmutableString& inMatchName)
{
    static const std::set<ImmutableString> names{"frei0r.brightness", "frei0r.glow",      "frei0r.invert0r",
                                                 "frei0r.pixeliz0r",  "frei0r.dissolve",  "avfilter.hflip",
                                                 "avfilter.negate",   "avfilter.boxblur", "avfilter.xfade"};
    return names.count(inMatchName) != 0;
}

__attribute__((no_sanitize("null"))) void StoreThroughNull()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

/// Faults inside a guard, and then does what the host does about machine exceptions.
void ProvokeCrash()
{
    // Once for each time that it is switched on, or no effect of these would ever run again.
    DebugDatabase::Set(kProvokeCrashKey, false);
    Dictionary checkpoint;
    try {
        exceptions::GuardMachineExceptions([&] {
            checkpoint.Set("checkpoint", ImmutableString("Machine Exception"));
            checkpoint.Set("level", ImmutableString("error"));
            checkpoint.Set("category", ImmutableString("exception"));
            StoreThroughNull();
        });
    } catch (const std::exception& exception) {
        if (const auto code = exceptions::GetMachineExceptionCode(exception)) {
            checkpoint.Set("exception", std::int64_t{*code});
        } else {
            checkpoint.Set("checkpoint", ImmutableString("Unhandled C++ Exception"));
            exceptions::LogException(exception, kSource);
        }
        if (exceptions::GetShouldCrashOnMachineException()) {
            exceptions::Panic(checkpoint);
        }
        exceptions::LeaveTrail(checkpoint);
        WriteCrashedEffectPluginFile();
    }
}

void MaybeProvokeCrashForTesting(const ImmutableString& inMatchName)
{
    static constinit const CachedDebugBool provoke(kProvokeCrashKey, false);
    if (provoke.Get() && IsForTesting(inMatchName)) {
        ProvokeCrash();
    }
}

template <typename Module>
ImmutableString Serialize(const Module& inModule)
{
    const CrashedEffectPlugin plugin(inModule->GetMetadata());
    // Where no plug-in can damage it. One for each plug-in and session that there is, so there are not many.
    return kiocore::utility::MakePermanentText(kiocore::serialization::GetJSONUTF8String(
        kiocore::serialization::JSONConvert<CrashedEffectPlugin>::ToJSON(plugin), false));
}

/// Puts the module's description on the thread's crash context. After an exception nothing is there.
template <typename Module>
void PushModule(const ImmutableString& inMatchName, const Module& inModule)
{
    SerializedMetadataMap& map = GetSerializedMetadataMap();
    std::shared_ptr<MapValue> value = map.Find(inMatchName);
    if (!value) [[unlikely]] {
        GetCrashFile(); // before the first plug-in can crash
        value = std::make_shared<MapValue>(Serialize(inModule));
        map.Insert(inMatchName, value);
    }
    static const ImmutableString key = ImmutableString::FromLiteral(kCrashContextMetadataKey);
    debug::PushCrashContextForCurrentThread(key, value->JSON());
}

/// Pushes and tries; a failed try takes the description away again, as no destructor will.
template <typename Module>
void SetCurrentModule(const ImmutableString& inMatchName, const Module& inModule)
{
    PushModule(inMatchName, inModule);
    try {
        MaybeProvokeCrashForTesting(inMatchName);
    } catch (...) {
        debug::PopCrashContextForCurrentThread();
        throw;
    }
}

std::string ReadCrashedPluginFile()
{
    const File file(GetCrashFile().path);
    if (!file.Exists()) {
        throw kiocore::kio_exception("Crashed plugin file does not exist", kError_NoCrashedPluginFile)
            .At(kSource, "!file.Exists()");
    }
    IPlatformByteStream stream(file.FullPath());
    std::string bytes(stream.Size(), '\0');
    bytes.resize(stream.ReadBlock(bytes.data(), bytes.size()));
    return bytes;
}

/// Innermost first; null when no plug-in runs on this thread. For signal handlers too.
const ImmutableString* FindSerializedMetadata() noexcept
{
    const auto stack = debug::detail::InspectCrashContextForCurrentThread();
    for (std::size_t i = 0; i < stack.Depth(); ++i) {
        if (const Dictionary::Value* const value = stack.At(i).Find(kCrashContextMetadataKey)) {
            return boost::get<ImmutableString>(value);
        }
    }
    return nullptr;
}

} // namespace

CrashedEffectPlugin::CrashedEffectPlugin(const EffectPluginMetadata& inMetadata)
    : matchName(inMetadata.matchName), displayName(inMetadata.displayName),
      categoryName(inMetadata.categoryName), isFirstParty(inMetadata.isFirstParty),
      version(inMetadata.version)
{
    if (const std::shared_ptr<UsageLogger> logger = UsageLogger::Get()) {
        sessionID = logger->GetSessionID();
    }
}

ScSetCurrentPluginModule::ScSetCurrentPluginModule(const IFilterModuleRef& inModule, std::int16_t)
{
    const ImmutableString matchName = inModule->GetMatchName();
    if (IsDetectionOn()) {
        SetCurrentModule(matchName, inModule);
    }
}

ScSetCurrentPluginModule::ScSetCurrentPluginModule(const ImmutableString& inMatchName,
                                                   const ITransitionModuleRef& inModule, std::int16_t)
{
    if (IsDetectionOn()) {
        SetCurrentModule(inMatchName, inModule);
    }
}

ScSetCurrentPluginModule::~ScSetCurrentPluginModule()
{
    if (IsDetectionOn()) {
        debug::PopCrashContextForCurrentThread();
    }
}

void WriteCrashedEffectPluginFile() noexcept
{
    if (!PrepareWriter()) {
        return;
    }
    const ImmutableString* const json = FindSerializedMetadata();
    if (!json || json->IsEmpty()) {
        return;
    }
    static constinit std::atomic<bool> sWasReported{false};
    if (sWasReported.exchange(true)) {
        return;
    }
    // Made exclusively: a report that nobody has read yet stays.
    OPlatformByteStream stream(sCrashFile.load(std::memory_order_acquire)->nativePath.c_str());
    if (stream.IsOpen()) {
        stream.WriteBlock(json->View().data(), json->Size());
    }
}

async::Future<CrashedEffectPlugin> ConsumeCrashedEffectPluginFile()
{
    const std::shared_ptr<threads::AsyncExecutor> executor = threads::CreatePreTerminationExecutor();
    const async::Future<std::string> read = async::CallAsync(executor, &ReadCrashedPluginFile, 0);
    // Queued before the parsing, so that the file is gone when the record is there; nobody waits for it.
    read.Then(executor, [](const std::string&) { File(GetCrashFile().path).Delete(); });
    return read.Then(executor, [](const std::string& text) {
        return kiocore::serialization::Serializer<CrashedEffectPlugin>::FromUTF8String(text);
    });
}

} // namespace TR

namespace kiocore::serialization {

namespace {

struct Member {
    const char* key;
    ImmutableString TR::CrashedEffectPlugin::*field;
};
constexpr Member kTexts[] = {
    {"matchName", &TR::CrashedEffectPlugin::matchName},
    {"displayName", &TR::CrashedEffectPlugin::displayName},
    {"pluginHostTechnology", &TR::CrashedEffectPlugin::pluginHostTechnology},
    {"categoryName", &TR::CrashedEffectPlugin::categoryName},
    {"version", &TR::CrashedEffectPlugin::version},
    {"author", &TR::CrashedEffectPlugin::author},
    {"type", &TR::CrashedEffectPlugin::type},
};
constexpr const char* kIsFirstParty = "isFirstParty";
constexpr const char* kSessionID = "sessionID";

} // namespace

JSON JSONConvert<TR::CrashedEffectPlugin>::ToJSON(const TR::CrashedEffectPlugin& inPlugin)
{
    JSONObject object;
    for (const Member& text : kTexts) {
        AddMember(object, text.key, inPlugin.*text.field);
    }
    AddMember(object, kIsFirstParty, inPlugin.isFirstParty);
    AddMember(object, kSessionID, inPlugin.sessionID);
    return object;
}

TR::CrashedEffectPlugin JSONConvert<TR::CrashedEffectPlugin>::FromJSON(const JSON& inValue)
{
    const JSONObject& object = AsObject(inValue);
    TR::CrashedEffectPlugin plugin;
    for (const Member& text : kTexts) {
        ReadMember(object, text.key, plugin.*text.field);
    }
    ReadMember(object, kIsFirstParty, plugin.isFirstParty);
    ReadMember(object, kSessionID, plugin.sessionID);
    return plugin;
}

} // namespace kiocore::serialization
