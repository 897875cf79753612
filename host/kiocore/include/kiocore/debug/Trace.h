#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kiocore::debug {

/// Trace channels are named by plain texts ("MCDB", "Host"); a channel writes when it is on and the
/// line's level is not above the channel's. Level 1 is what matters most, 10 is everything.
///
/// Threading: any thread; lines of different threads are never mixed within a line. The sink is
/// called under the trace's own lock and must not trace.

/// Switches a channel on up to a level, or off with a negative level.
KIO_EXPORT void SetTraceLevel(std::string_view inChannel, int inLevel);
/// Whether a line of this level would be written. Asking is a look-up: callers on hot paths keep the
/// answer and ask again when TraceChangeCount() moves.
KIO_EXPORT bool TraceEnabled(std::string_view inChannel, int inLevel);
/// Changes with every SetTraceLevel; never 0. One relaxed load.
KIO_EXPORT std::uint32_t TraceChangeCount();
/// Writes one text if the channel is on for this level.
KIO_EXPORT void Trace(int inLevel, std::string_view inChannel, std::string_view inTextUTF8);
KIO_EXPORT void Trace(int inLevel, std::string_view inChannel, utility::UTF16View inText);

/// Where lines go: by default to standard error as "[channel] text" and a line feed (a text that ends
/// with one gets no second). An empty function restores that.
using TraceSink = std::function<void(std::string_view inChannel, int inLevel, std::string_view inTextUTF8)>;
KIO_EXPORT void SetTraceSink(TraceSink inSink);

/// One argument of a host call as its trace line shows it: texts quoted, control characters escaped.
class KIO_EXPORT TraceArgument {
public:
    TraceArgument(utility::UTF16View inText);
    TraceArgument(const utility::UTF16String& inText) : TraceArgument(utility::UTF16View(inText)) {}
    TraceArgument(std::string_view inText);
    TraceArgument(const std::string& inText) : TraceArgument(std::string_view(inText)) {}
    TraceArgument(const char* inText) : TraceArgument(std::string_view(inText)) {}
    TraceArgument(const utility::ImmutableString& inText) : TraceArgument(inText.View()) {}
    TraceArgument(const utility::Guid& inGuid) : mText(inGuid.AsUTF8()) {}
    TraceArgument(bool inValue) : mText(inValue ? "true" : "false") {}
    TraceArgument(int inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(long inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(long long inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(unsigned inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(unsigned long inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(unsigned long long inValue) : mText(std::to_string(inValue)) {}
    TraceArgument(float inValue) : TraceArgument(double(inValue)) {}
    TraceArgument(double inValue);

    const std::string& Text() const { return mText; }

private:
    std::string mText;
};

/// True while channel "Host" is on.
extern KIO_EXPORT std::atomic<bool> gHostTraceOn;
/// Writes "name(argument, argument)" to channel "Host" at level 1.
KIO_EXPORT void TraceHostCall(const char* inName, std::initializer_list<TraceArgument> inArguments);

} // namespace kiocore::debug

/// Every operation that the library calls stands at the top of its implementation with its name and
/// arguments, so that a person, or a test, can see the calls in order. One relaxed load when off.
#define KIO_HOST_CALL(name, ...)                                                                             \
    do {                                                                                                     \
        if (::kiocore::debug::gHostTraceOn.load(std::memory_order_relaxed)) [[unlikely]] {                   \
            ::kiocore::debug::TraceHostCall(name, {__VA_ARGS__});                                            \
        }                                                                                                    \
    } while (false)
