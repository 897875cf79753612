// Any bytes as a crash file: refused, or read as a record that is written and read back the same.

#include <TR/EffectPluginManagerCrashDetection.h>

#include <cstdlib>

namespace {

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    using Plugins = kiocore::serialization::Serializer<TR::CrashedEffectPlugin>;
    TR::CrashedEffectPlugin plugin;
    try {
        plugin = Plugins::FromUTF8String({reinterpret_cast<const char*>(inBytes), inSize});
    } catch (const kiocore::serialization::not_well_formed_exception&) {
        return 0;
    } catch (const kiocore::serialization::bad_cast_exception&) {
        return 0;
    }
    const std::string written = Plugins::ToUTF8String(plugin);
    const TR::CrashedEffectPlugin again = Plugins::FromUTF8String(written);
    Require(again.matchName == plugin.matchName && again.sessionID == plugin.sessionID &&
            again.isFirstParty == plugin.isFirstParty && Plugins::ToUTF8String(again) == written);
    return 0;
}
