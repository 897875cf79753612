// What the engine keeps for the life of the process, and nothing points to. Natives are counted by the tests.
#include <kiocore/Export.h>

extern "C" KIO_EXPORT const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions()             // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libjavascriptcoregtk\n";
}
