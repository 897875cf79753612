#include "ScriptRunner.h"

namespace {

using kioscripting::EngineSettings;
using kioscripting::kError_ScriptTimeLimit;

constexpr const char* kEndless[] = {
    "for (;;);",
    "for (;;) { try { for (;;); } catch {} finally {} }",
    "[3, 1, 2].sort(() => { for (;;); })",
    "for (;;) { try { [1].map(() => { for (;;); }) } catch {} }",
    "JSON.stringify({ toJSON() { for (;;); } })",
    "Promise.resolve().then(() => { for (;;); }); 5",
    "(async () => { await null; for (;;); })()",
    "(async () => { for (;;) await null; })()",
    "(function f() { Promise.resolve().then(f) })()",
    "for (;;) new Acme.Sound.Level().twin",
    "for (;;) { try { console.log({ get a() { for (;;); } }) } catch {} }",
    "for (;;) { try { L.echo({ get a() { for (;;); } }) } catch {} }",
    "for (;;) { try { require('endless') } catch {} }",
    "({ get a() { for (;;); } })",
    "function* g() { for (;;) yield 1; } for (const x of g());",
    "for (;;) { try { (function f() { f() })() } catch {} }",
};

EngineSettings WithModule()
{
    EngineSettings settings;
    settings.loadModule = [](const std::string&, const std::string&) {
        return kioscripting::ModuleSource{"endless.js", "for (;;);"};
    };
    return settings;
}

TEST(ScriptLimits, EndWhatRunsTooLong)
{
    for (const char* const script : kEndless) {
        SCOPED_TRACE(script);
        EngineSettings settings = WithModule();
        settings.timeLimitSeconds = 0.1;
        ScriptRunner scripts(settings);
        EXPECT_EQ(scripts.Failure(script).Code(), kError_ScriptTimeLimit);
        EXPECT_EQ(scripts.Text("1 + 1"), "2");
        EXPECT_EQ(scripts.Text("(async () => { await null; return 3 })()"), "3");
    }
}

TEST(ScriptLimits, EndWhatWasCancelled)
{
    for (const char* const script : kEndless) {
        SCOPED_TRACE(script);
        int asked = 0;
        EngineSettings settings = WithModule();
        settings.isCancelled = [&] { return ++asked >= 3; };
        ScriptRunner scripts(settings);
        EXPECT_EQ(scripts.Failure(script).Code(), kiocore::kError_Cancelled);
        asked = -1000;
        EXPECT_EQ(scripts.Text("1 + 1"), "2");
    }
}

TEST(ScriptLimits, PassOnWhatAskingThrew)
{
    EngineSettings settings;
    settings.isCancelled = []() -> bool { throw kiocore::kio_exception("cannot ask", 0x80770009); };
    ScriptRunner scripts(settings);
    EXPECT_EQ(scripts.Text("for (;;);"), "kio! cannot ask");
}

TEST(ScriptLimits, LeaveAloneWhatIsQuick)
{
    EngineSettings settings;
    settings.timeLimitSeconds = 100;
    ScriptRunner scripts(settings);
    EXPECT_EQ(scripts.Text(
                  "(async () => { let n = 0; for (let i = 0; i < 100000; ++i) n += await 1; return n })()"),
              "100000");
    EXPECT_THAT(scripts.Text("new Promise(() => {})"), testing::HasSubstr("never settled"));
}

} // namespace
