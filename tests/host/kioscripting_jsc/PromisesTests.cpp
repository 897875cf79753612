#include "ScriptRunner.h"

namespace {

TEST(ScriptPromises, AreWaitedFor)
{
    ScriptRunner scripts;
    const struct {
        const char* name;
        const char* script;
        std::string expected;
    } kCases[] = {
        {"settled", "Promise.resolve(5)", "5"},
        {"async", "(async () => { const a = await 1; return a + await new Promise(r => r(2)) })()", "3"},
        {"rejected", "Promise.reject(new Error('no'))", "! test.js:1:25: no"},
        {"thrown after a wait", "(async () => {\n await null;\n L.fail('kio') })()",
         "! test.js:3:8: Too loud"},
        {"rejected with a number", "Promise.reject(5)", "! uncaught 5"},
        {"never", "new Promise(() => {})",
         "! The script's value is a promise that is never settled: nothing is left to be done"},
        {"nobody looks", "Promise.reject(new Error('lost')); 5", "! test.js:1:25: lost"},
        {"somebody looks later",
         "const p = Promise.reject(1); Promise.resolve().then(() => p.catch(() => 0)); 6", "6"},
        {"jobs run before the end", "var done = 0; Promise.resolve().then(() => { done = 1 }); 0", "0"},
        {"", "done", "1"},
        {"big integers", "(2n ** 70n).toString()", "\"1180591620717411303424\""},
        {"all", "Promise.all([1, Promise.resolve(2)])", "[ 1, 2 ]"},
        {"a thenable is no promise", "({ then() { throw 1 } })", "{ then: [function then] }"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(scripts.Text(test.script), test.expected);
    }
}

} // namespace
