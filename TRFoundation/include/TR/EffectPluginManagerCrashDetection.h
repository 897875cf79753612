#pragma once

#include <TR/PluginModules.h>
#include <kiocore/Export.h>
#include <kiocore/async/Future.h>
#include <kiocore/serialization/Serializer.h>
#include <kiocore/utility/ImmutableString.h>

#include <cstdint>
#include <string>

/// Names the effect plug-in that took the process down. While a plug-in runs, a sentinel keeps its
/// description on the thread's crash context; crash handling writes the innermost one to a file; the next
/// start consumes it.
///
/// Recording and writing are off unless the host switches feature "Vre.PluginManagerCrashDetection" on before
/// the first sentinel; consuming is not. To have crashes written, the host installs crash handling
/// (kiocore/debug/CrashHandling.h) with WriteCrashedEffectPluginFile as a callback.
namespace TR {

inline constexpr const char* kPluginManagerCrashDetectionFeature = "Vre.PluginManagerCrashDetection";
/// Key of the crash-context entry; its value is the CrashedEffectPlugin as compact JSON.
inline constexpr char kCrashContextMetadataKey[] = "TR.CrashedEffectPluginMetadata";
/// Debug-database switch: the next sentinel of one of nine effects provokes a fault inside a
/// machine-exception guard, to try the detection end to end. Set back to false when it did. The nine are
///   frei0r.brightness, frei0r.glow, frei0r.invert0r, frei0r.pixeliz0r, frei0r.dissolve,
///   avfilter.hflip, avfilter.negate, avfilter.boxblur, avfilter.xfade
/// The host may be set to die of it (SetShouldCrashOnMachineException): then crash handling writes the file.
/// Else the file is written at once, and the plug-in runs.
inline constexpr const char* kProvokeCrashKey = "TR.EffectPluginManager.ProvokeCrash";

/// The plug-in that was running, as the file tells it.
struct KIO_EXPORT CrashedEffectPlugin {
    CrashedEffectPlugin() = default;
    /// With the present usage-logging session, if any. Technology, author and type stay empty.
    explicit CrashedEffectPlugin(const EffectPluginMetadata& inMetadata);
    CrashedEffectPlugin(const CrashedEffectPlugin&) = default;
    CrashedEffectPlugin(CrashedEffectPlugin&&) = default;
    CrashedEffectPlugin& operator=(const CrashedEffectPlugin&) = default;
    CrashedEffectPlugin& operator=(CrashedEffectPlugin&&) = default;

    kiocore::ImmutableString matchName;
    kiocore::ImmutableString displayName;
    kiocore::ImmutableString pluginHostTechnology;
    kiocore::ImmutableString categoryName;
    bool isFirstParty = false;
    kiocore::ImmutableString version;
    kiocore::ImmutableString author;
    kiocore::ImmutableString type;
    std::string sessionID;
};

/// Names the plug-in that runs on this thread for as long as it lives; they nest. Does nothing while the
/// feature is off. The description is made once and kept while the plug-in is in use.
///
/// Threading: made and destroyed on the thread that calls the plug-in.
class KIO_EXPORT ScSetCurrentPluginModule {
public:
    /// @param inUnused  taken for the sake of callers; means nothing.
    /// @throws null_reference_exception for an empty module, and what it throws when asked for its metadata;
    ///     nothing is named then.
    ScSetCurrentPluginModule(const IFilterModuleRef& inModule, std::int16_t inUnused);
    /// @param inMatchName  of the transition; the module's own stands in the description.
    ScSetCurrentPluginModule(const kiocore::ImmutableString& inMatchName,
                             const ITransitionModuleRef& inModule, std::int16_t inUnused);
    ~ScSetCurrentPluginModule();
    ScSetCurrentPluginModule(const ScSetCurrentPluginModule&) = delete;
    ScSetCurrentPluginModule& operator=(const ScSetCurrentPluginModule&) = delete;
};

/// Writes the description of the innermost plug-in on the calling thread's crash context to the crash file.
/// At most once a process; a file that is there already stays. Silent about everything that prevents it.
///
/// Threading: any thread. May be called in a signal handler on the crashing thread.
KIO_EXPORT void WriteCrashedEffectPluginFile() noexcept;

/// Reads the crash file of an earlier run and deletes it, on an executor that still runs while the process
/// shuts down. A file that cannot be understood is deleted too.
/// @return fails with kError_ExecutorTerminated; kError_NoCrashedPluginFile when there is none; what
///     serialization throws for a text that is no such record.
KIO_EXPORT kiocore::async::Future<CrashedEffectPlugin> ConsumeCrashedEffectPluginFile();

/// "Crashed plugin file does not exist".
inline constexpr std::uint32_t kError_NoCrashedPluginFile = 0xA00F0003;

} // namespace TR

template <>
struct KIO_EXPORT kiocore::serialization::JSONConvert<TR::CrashedEffectPlugin> {
    static JSON ToJSON(const TR::CrashedEffectPlugin& inPlugin);
    /// Members may be absent and keep their default then; others are ignored.
    /// @throws bad_cast_exception.
    static TR::CrashedEffectPlugin FromJSON(const JSON& inValue);
};
