#include "ScriptRunner.h"

namespace {

using kioscripting::kError_Script;

TEST(ScriptErrors, OfNativesCanBeCaught)
{
    ScriptRunner scripts;
    const struct {
        const char* kind;
        std::string expected;
    } kCases[] = {
        {"kio", "[ true, \"Too loud\", 2155282434, \"test.js\", 2 ]"},
        {"boost", "[ true, \"Too loud for boost\", 2155282435, \"test.js\", 2 ]"},
        {"memory", "[ true, \"Out of memory\", 2147549184, \"test.js\", 2 ]"},
        {"standard", "[ true, \"out of range\", 2147549184, \"test.js\", 2 ]"},
        {"number", "[ true, \"Unknown exception\", 2147549184, \"test.js\", 2 ]"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.kind);
        EXPECT_EQ(
            scripts.Text("try {\nL.fail('" + std::string(test.kind) +
                         "')\n} catch (e) { [e instanceof Error, e.message, e.code, e.sourceURL, e.line] }"),
            test.expected);
    }
    EXPECT_EQ(scripts.Text("function deep() { L.fail('kio') }\ntry { deep() } catch (e) { e.stack }"),
              "\"deep@test.js:1:25\\nglobal code@test.js:2:11\"");
    EXPECT_EQ(scripts.Text("try { L.peak } catch (e) { e.code.toString(16) }"), "\"80770001\"");
}

TEST(ScriptErrors, ComeOutWithTheirPlace)
{
    ScriptRunner scripts;
    const struct {
        const char* name;
        const char* script;
        std::string full;
        std::uint32_t code;
    } kCases[] = {
        {"a native's", "\n  L.fail('kio')", "test.js:2:9: Too loud", 0x80770002},
        {"a native's, thrown again", "try { L.fail('kio') } catch (e) { throw e }", "test.js:1:13: Too loud",
         0x80770002},
        {"a getter's", "L.peak", "test.js:1:2: The meter is off", 0x80770001},
        {"a code that a script made up", "const e = new Error('x'); e.code = 7; throw e", "test.js:1:20: x",
         kError_Script},
        {"a script's", "\n\nthrow new Error('no')", "test.js:3:16: no", kError_Script},
        {"with its class", "null.x", "test.js:1:5: TypeError: null is not an object (evaluating 'null.x')",
         kError_Script},
        {"syntax", "let a = 1;\nlet b = ;", "test.js:2: SyntaxError: Unexpected token ';'", kError_Script},
        {"a number", "throw 5", "uncaught 5", kError_Script},
        {"a text", "throw 'text'", "uncaught text", kError_Script},
        {"nothing", "throw undefined", "uncaught undefined", kError_Script},
        {"an object", "throw { a: 1 }", "uncaught { a: 1 }", kError_Script},
        {"a symbol", "throw Symbol('s')", "uncaught Symbol(s)", kError_Script},
        {"one that cannot be asked",
         "throw new Proxy({}, { get() { throw 1 }, getPrototypeOf() { throw 2 } })", "uncaught <threw 2>",
         kError_Script},
        {"too deep", "(function f() { f() })()", "RangeError: Maximum call stack size exceeded.",
         kError_Script},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const kioscripting::script_exception error = scripts.Failure(test.script);
        if (test.full.starts_with("RangeError")) {
            EXPECT_EQ(error.what(), test.full);
        } else {
            EXPECT_EQ(error.Full(), test.full);
        }
        EXPECT_EQ(error.Code(), test.code);
    }
    EXPECT_EQ(scripts.Failure("function f() {\n throw new Error('x') }\nf()").Place().stack,
              "f@test.js:2:17\nglobal code@test.js:3:2");
    EXPECT_THAT(scripts.Failure("throw 5").Place().file, "");
}

TEST(ScriptErrors, LeaveTheEngineUsable)
{
    ScriptRunner scripts;
    for (const char* script : {"(function f() { f() })()", "throw 1", "let =", "L.fail('memory')"}) {
        scripts.Failure(script);
        EXPECT_EQ(scripts.Text("1 + 1"), "2") << script;
    }
}

TEST(ScriptErrors, KeepTheLineThatAScriptStartsWith)
{
    ScriptRunner scripts;
    try {
        scripts.engine->Evaluate("\nthrow new Error('x')", "part.js", 40);
        FAIL();
    } catch (const kioscripting::script_exception& error) {
        EXPECT_EQ(error.Full(), "part.js:41:16: x");
    }
}

} // namespace
