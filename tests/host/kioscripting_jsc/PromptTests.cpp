#include "ScriptRunner.h"

namespace {

TEST(ScriptPrompt, KnowsWhatIsIncomplete)
{
    ScriptRunner scripts;
    for (const char* script :
         {"function f() {", "[1,", "if (a) {", "`text", "/* comment", "f(", "a +", "({ a:"}) {
        EXPECT_TRUE(scripts.engine->IsIncomplete(script)) << script;
    }
    for (const char* script : {"", "1", "let = ;", "}", "f()", "throw 1", "'text", "a b"}) {
        EXPECT_FALSE(scripts.engine->IsIncomplete(script)) << script;
    }
}

TEST(ScriptPrompt, Completes)
{
    ScriptRunner scripts;
    scripts.Run("let declared = { one: 1, two: { three: 3 }, get trap() { throw 1 } }; var ran = false; "
                "Object.defineProperty(globalThis, 'trapped', { get() { ran = true; return {} } }); 0");
    const struct {
        const char* text;
        std::vector<std::string> expected;
    } kCases[] = {
        {"Acme.S", {"Acme.Sound"}},
        {"Acme.Sound.", {"Acme.Sound.Level", "Acme.Sound.Meter"}},
        {"x = Acm", {"Acme"}},
        {"L.la", {"L.label"}},
        {"L.peak.", {}},
        {"declared.t", {"declared.toLocaleString", "declared.toString", "declared.trap", "declared.two"}},
        {"declared.two.th", {"declared.two.three"}},
        {"declared.trap.x", {}},
        {"trapped.x", {}},
        {"nobody.x", {}},
        {"f().x", {}},
        {"12", {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.text);
        EXPECT_EQ(scripts.engine->Complete(test.text), test.expected);
    }
    EXPECT_EQ(scripts.Text("ran"), "false");
}

} // namespace
