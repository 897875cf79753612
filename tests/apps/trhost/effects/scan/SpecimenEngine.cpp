// An engine module whose plug-ins fail in every way that a scan meets. A "plug-in file" is a text: one
// plug-in a line, its name, and behind a colon the names of its formats. Names say what goes wrong:
//   "crash ...", "hang ...", "exit ...", "abort loudly ...", "throw ...", "print ...", "greedy ..."  when
//   described "second ..."   crashes when its process has described something before "twin"         has the
//   match name "specimen.twin" whatever file it is in
// A file that begins with "crash" or "hang" does so when asked what it holds.

#include "SpecimenPlugins.h"

#include "effects/EffectEngine.h"

#include <kiocore/classref/UnknownBase.h>
#include <kiocore/config/Errors.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace specimens {

using namespace trhost::effects;
namespace {

class Module final : public TR::IFilterModule,
                     public IVideoEffectModule,
                     public IAudioEffectModule,
                     public virtual kiocore::classref::UnknownBase {
public:
    Module(EffectDescription inDescription, IPluginCalls& inCalls)
        : mDescription(std::move(inDescription)), mCalls(inCalls)
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (inInterfaceID == TR::IFilterModule::InterfaceID()) {
            return static_cast<TR::IFilterModule*>(this);
        }
        if (inInterfaceID == IVideoEffectModule::InterfaceID()) {
            return static_cast<IVideoEffectModule*>(this);
        }
        if (inInterfaceID == IAudioEffectModule::InterfaceID()) {
            return static_cast<IAudioEffectModule*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }
    kiocore::ImmutableString GetMatchName() const override { return mDescription.matchName; }
    TR::EffectPluginMetadata GetMetadata() const override { return {}; }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override { return {}; }
    std::unique_ptr<IVideoEffect> Open(const VideoEffectForm& inForm) override
    {
        return OpenVideo(mDescription.pluginName, mCalls, kiocore::classref::RefToSelf(*this), inForm);
    }
    std::unique_ptr<IAudioEffect> Open(int, int inChannels) override
    {
        return OpenAudio(mDescription.pluginName, mCalls, kiocore::classref::RefToSelf(*this), inChannels);
    }

private:
    const EffectDescription mDescription;
    IPluginCalls& mCalls;
};

[[noreturn]] void HangForEver()
{
    for (std::atomic<bool> forever{true}; forever;) {
    }
    std::abort();
}

bool Begins(const std::string& inText, const char* inBeginning)
{
    return inText.rfind(inBeginning, 0) == 0;
}

void Misbehave(const std::string& inName)
{
    static int sCalls = 0;
    ++sCalls;
    if (Begins(inName, "crash") || (Begins(inName, "second") && sCalls > 1)) {
        std::raise(SIGSEGV);
    } else if (Begins(inName, "hang")) {
        HangForEver();
    } else if (Begins(inName, "exit")) {
        std::exit(7);
    } else if (Begins(inName, "abort loudly")) {
        std::fputs("plug-in: all is well\nplug-in: ring buffer is upside down\n", stderr);
        std::abort();
    } else if (Begins(inName, "throw")) {
        throw std::runtime_error("no licence was found");
    } else if (Begins(inName, "print")) {
        for (int i = 0; i < 20'000; ++i) {
            std::puts("{\"done\":true}"); // more than any pipe holds, and no answer
        }
    } else if (Begins(inName, "greedy")) {
        ::operator delete(::operator new(std::size_t(3) << 40)); // throws where there is a limit
    }
}

class Engine final : public IEffectEngine {
public:
    explicit Engine(IPluginCalls& inCalls) : mCalls(inCalls) {}
    const char* Technology() const override { return "specimen"; }
    std::vector<std::string> PluginNames(const std::string& inFile) override
    {
        std::vector<std::string> names;
        for (const std::string& line : Lines(inFile)) {
            names.push_back(line.substr(0, line.find(':')));
        }
        if (!names.empty() && (names[0] == "crash" || names[0] == "hang")) {
            Misbehave(names[0]);
        }
        return names;
    }
    EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) override
    {
        Misbehave(inPluginName);
        EffectDescription description;
        description.matchName = "specimen." + inPluginName;
        description.technology = Technology();
        description.pluginName = inPluginName;
        description.displayName = inPluginName;
        description.file = inFile;
        description.kind =
            Begins(inPluginName, "sound") ? EffectKind::kAudioFilter : EffectKind::kVideoFilter;
        for (const std::string& line : Lines(inFile)) {
            std::istringstream words(line.substr(std::min(line.find(':'), line.size() - 1) + 1));
            for (std::string word; line.rfind(inPluginName + ":", 0) == 0 && words >> word;) {
                description.isAccelerated = description.isAccelerated || word == "accelerated";
                if (const auto format = kiomediatypes::PixelFormatNamed(word)) {
                    description.formats.push_back(format);
                }
            }
        }
        return description;
    }
    std::vector<std::string> FilesBehind(const std::string& inFile) override { return {inFile + ".behind"}; }
    void SetFrameMemory(IFrameMemory* inMemory) override { SetMemory(inMemory); }
    TR::IFilterModuleRef OpenFilter(const EffectDescription& inDescription) override
    {
        return kiocore::classref::MakeObject<Module>(inDescription, mCalls);
    }
    TR::ITransitionModuleRef OpenTransition(const EffectDescription&) override { return {}; }

private:
    static std::vector<std::string> Lines(const std::string& inFile)
    {
        std::ifstream file(inFile);
        if (!file) {
            throw kiocore::kio_exception(inFile + " cannot be read", kEffectError_NoPlugin);
        }
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    IPluginCalls& mCalls;
};

} // namespace
} // namespace specimens

trhost::effects::IEffectEngine* trhost_effect_engine(int inVersion, trhost::effects::IPluginCalls& inCalls)
{
    static specimens::Engine engine(inCalls);
    return inVersion == trhost::effects::kEffectEngineVersion ? &engine : nullptr;
}
