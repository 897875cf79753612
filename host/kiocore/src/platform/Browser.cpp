#include <kiocore/platform/Browser.h>

#include <kiocore/debug/Trace.h>

#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

extern char** environ;

namespace kiocore::platform {
namespace {

constexpr int kOpened = 0;
constexpr int kNoWebAddress = -1;
constexpr int kNothingToOpenItWith = -2;

struct Replacements {
    std::mutex lock;                               // guards openers
    std::vector<ScReplaceBrowser::Opener> openers; // innermost last
};

Replacements& TheReplacements()
{
    static Replacements replacements;
    return replacements;
}

ScReplaceBrowser::Opener CurrentReplacement()
{
    Replacements& all = TheReplacements();
    std::lock_guard lock(all.lock);
    return all.openers.empty() ? ScReplaceBrowser::Opener() : all.openers.back();
}

bool IsWebAddress(std::string_view inURL)
{
    const auto beginsWith = [&](std::string_view scheme) {
        return inURL.size() > scheme.size() &&
               std::equal(scheme.begin(), scheme.end(), inURL.begin(),
                          [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b); });
    };
    const bool isPlain = std::all_of(inURL.begin(), inURL.end(), [](char unit) {
        const auto byte = static_cast<unsigned char>(unit);
        return byte > 0x20 && byte != 0x7F;
    });
    return isPlain && (beginsWith("http://") || beginsWith("https://"));
}

/// The shell is gone at once and its child belongs to the system: a browser may run for longer than we do.
int OpenOnDesktop(std::string inURL)
{
    char shell[] = "/bin/sh";
    char flag[] = "-c";
    char script[] =
        "command -v xdg-open >/dev/null 2>&1 || exit 1; xdg-open \"$0\" </dev/null >/dev/null 2>&1 &";
    char* const arguments[] = {shell, flag, script, inURL.data(), nullptr};
    pid_t process = 0;
    if (posix_spawn(&process, shell, nullptr, nullptr, arguments, environ) != 0) {
        return kNothingToOpenItWith;
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? kOpened : kNothingToOpenItWith;
}

} // namespace

int OpenURLInBrowser(utility::UTF16View inURL)
{
    KIO_HOST_CALL("kiocore::platform::OpenURLInBrowser", inURL);
    std::string url = utility::ToUTF8(inURL);
    if (!IsWebAddress(url)) {
        return kNoWebAddress;
    }
    if (const auto replacement = CurrentReplacement()) {
        return replacement(url);
    }
    return OpenOnDesktop(std::move(url));
}

ScReplaceBrowser::ScReplaceBrowser(Opener inOpener)
{
    Replacements& all = TheReplacements();
    std::lock_guard lock(all.lock);
    all.openers.push_back(std::move(inOpener));
}

ScReplaceBrowser::~ScReplaceBrowser()
{
    Replacements& all = TheReplacements();
    std::lock_guard lock(all.lock);
    all.openers.pop_back();
}

} // namespace kiocore::platform

void kiocore::utility::OpenURLInDefaultBrowser(UTF16View inURL)
{
    KIO_HOST_CALL("kiocore::utility::OpenURLInDefaultBrowser", inURL);
    if (const int result = platform::OpenURLInBrowser(inURL); result < 0) {
        debug::Trace(1, "Errors",
                     ToUTF8(inURL) + (result == -1 ? ": not opened, as it is no web address"
                                                   : ": not opened, as there is no browser to open it with"));
    }
}
