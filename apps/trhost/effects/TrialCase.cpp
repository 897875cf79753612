#include "TrialCase.h"

#include <kiocore/serialization/JSONConvert.h>

#include <iterator>

namespace trhost::effects {

namespace {

using namespace kiocore::serialization;

constexpr const char* kKindNames[] = {
    "crashed",          "hung",   "wrote outside", "read outside", "changed input",
    "thread-dependent", "varies", "bad samples",   "failed",       "does not take"};
constexpr const char* kUseNames[] = {"input", "output", "given"};

template <typename Enum, std::size_t N>
Enum FromName(const char* const (&inNames)[N], const std::string& inName, const char* inExpected)
{
    for (std::size_t i = 0; i < N; ++i) {
        if (inName == inNames[i]) {
            return static_cast<Enum>(i);
        }
    }
    throw bad_cast_exception("the text \"" + inName + "\"", inExpected);
}

} // namespace

const char* NameOf(FindingKind inKind)
{
    return kKindNames[static_cast<std::size_t>(inKind)];
}

bool IsFault(FindingKind inKind)
{
    switch (inKind) {
    case FindingKind::kCrashed:
    case FindingKind::kHung:
    case FindingKind::kWroteOutside:
    case FindingKind::kReadOutside:
    case FindingKind::kChangedInput:
    case FindingKind::kThreadDependent:
    case FindingKind::kBadSamples:
    case FindingKind::kFailed:
        return true;
    case FindingKind::kVaries:
    case FindingKind::kTakesNot:
        return false;
    }
    return true;
}

JSON ToJSON(const TrialCase& inCase)
{
    JSONObject object;
    AddMember(object, "threaded", inCase.isThreaded);
    if (inCase.isAudio) {
        AddMember(object, "rate", inCase.sampleRate);
        AddMember(object, "channels", inCase.channels);
        AddMember(object, "block", inCase.blockFrames);
        return object;
    }
    AddMember(object, "width", inCase.width);
    AddMember(object, "height", inCase.height);
    if (inCase.format != kiomediatypes::kPixelFormat_Any) {
        AddMember(object, "format", std::string(kiomediatypes::NameOf(inCase.format)));
    }
    return object;
}

TrialCase TrialCaseFromJSON(const JSON& inValue)
{
    const JSONObject& object = AsObject(inValue);
    TrialCase value;
    value.isThreaded = GetMember<bool>(object, "threaded");
    if (ReadMember(object, "rate", value.sampleRate)) {
        value.isAudio = true;
        value.channels = GetMember<int>(object, "channels");
        value.blockFrames = GetMember<int>(object, "block");
        return value;
    }
    value.width = GetMember<std::uint32_t>(object, "width");
    value.height = GetMember<std::uint32_t>(object, "height");
    std::string format;
    if (ReadMember(object, "format", format)) {
        value.format = kiomediatypes::PixelFormatNamed(format);
    }
    return value;
}

JSON ToJSON(const TrialFinding& inFinding)
{
    JSONObject object;
    AddMember(object, "kind", std::string(NameOf(inFinding.kind)));
    if (inFinding.kind == FindingKind::kWroteOutside || inFinding.kind == FindingKind::kReadOutside) {
        AddMember(object, "use", std::string(kUseNames[static_cast<std::size_t>(inFinding.use)]));
        AddMember(object, "behind", inFinding.isBehind);
        AddMember(object, "distance", inFinding.distanceBytes);
    }
    if (!inFinding.said.empty()) {
        AddMember(object, "said", inFinding.said);
    }
    return object;
}

TrialFinding TrialFindingFromJSON(const JSON& inValue)
{
    const JSONObject& object = AsObject(inValue);
    TrialFinding value;
    value.kind =
        FromName<FindingKind>(kKindNames, GetMember<std::string>(object, "kind"), "a kind of finding");
    std::string use;
    if (ReadMember(object, "use", use)) {
        value.use = FromName<MemoryUse>(kUseNames, use, "a use of memory");
    }
    ReadMember(object, "behind", value.isBehind);
    ReadMember(object, "distance", value.distanceBytes);
    ReadMember(object, "said", value.said);
    return value;
}

} // namespace trhost::effects
