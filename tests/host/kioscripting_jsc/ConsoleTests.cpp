#include "ScriptRunner.h"

namespace {

TEST(ScriptConsole, ShowsValuesAsPeopleReadThem)
{
    ScriptRunner scripts;
    const struct {
        const char* script;
        std::string expected;
    } kCases[] = {
        {"'text', 1, true, null, undefined, 10n, Symbol('s'), -0",
         "text 1 true null undefined 10n Symbol(s) -0"},
        {"", ""},
        {"{ a: 1, 'b c': 'x', [Symbol.iterator]: [] }",
         "{ a: 1, \"b c\": \"x\", [Symbol(Symbol.iterator)]: [] }"},
        {"[1,,'a']", "[ 1, <empty>, \"a\" ]"},
        {"{ a: { b: { c: { d: 1 } } } }", "{ a: { b: { c: [Object] } } }"},
        {"[[[[1]]]]", "[ [ [ [array] ] ] ]"},
        {"(() => { const o = { n: 1 }; o.o = o; return o })()", "{ n: 1, o: [circular] }"},
        {"L",
         "Level {\n  decibels: 0,\n  label: \"0 dB \xE2\x99\xAA\",\n  peak: <threw The meter is off>,\n"
         "  twin: Level {\n    decibels: 0,\n    label: \"0 dB \xE2\x99\xAA\",\n    peak: <threw The meter "
         "is "
         "off>,\n    twin: Level {\n      decibels: 0,\n      label: \"0 dB \xE2\x99\xAA\",\n      peak: "
         "<threw The meter is off>,\n      twin: [Level]\n    }\n  }\n}"},
        {"new Map([['a', { b: 1 }]]), new Set([1, 2])", "Map(1) { \"a\" => { b: 1 } } Set(2) { 1, 2 }"},
        {"new Uint8Array([1, 2]), new ArrayBuffer(3)", "Uint8Array(2) [ 1, 2 ] ArrayBuffer(3)"},
        {"new Date(0), /a+/g", "1970-01-01T00:00:00.000Z /a+/g"},
        {"() => 1, class A {}, function f() {}", "[function] [class A] [function f]"},
        {"new TypeError('bad')", "TypeError: bad"},
        {"Object.create(null)", "[null prototype] {}"},
        {"new (class Point { constructor() { this.x = 1 } })()", "Point { x: 1 }"},
        {"{ get a() { throw new Error('no') }, get b() { throw null } }",
         "{ a: <threw no>, b: <threw null> }"},
        {"new Proxy({}, { ownKeys() { throw new Error('trap') } })", "<threw trap>"},
        {"Acme.Sound", "Acme.Sound { Level: [class Level], Meter: [class Meter] }"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.script);
        scripts.written.clear();
        scripts.Run("console.log(" + std::string(test.script) + ")");
        EXPECT_EQ(scripts.written, test.expected + "\n");
    }
}

TEST(ScriptConsole, CutsWhatIsLong)
{
    ScriptRunner scripts;
    EXPECT_THAT(scripts.Text("new Array(5000).fill(1)"), testing::HasSubstr("... 4900 more items"));
    EXPECT_THAT(scripts.Text("'x'.repeat(20000)"), testing::HasSubstr("... 10000 more characters"));
}

TEST(ScriptConsole, HasLevels)
{
    ScriptRunner scripts;
    scripts.Run(
        "console.log('a'); console.info('b'); console.warn('c'); console.error('d'); console.debug('e')");
    EXPECT_EQ(scripts.written, "a\ninfo: b\nwarning: c\nerror: d\ne\n");
}

TEST(ScriptDescriptions, AreOfClassesObjectsAndNames)
{
    ScriptRunner scripts;
    const std::string meter =
        "\"class Acme.Sound.Meter\\n    Shows levels.\\n\\n  call()\\n      Calls the test\\n\"";
    EXPECT_EQ(scripts.Text("describe(Acme.Sound.Meter)"), meter);
    EXPECT_EQ(scripts.Text("describe('Acme.Sound.Meter')"), meter);
    EXPECT_EQ(scripts.Run("describe(L)"), scripts.Run("describe('Acme.Sound.Level')"));
    EXPECT_EQ(scripts.Run("describe(Acme.Sound)"), scripts.Run("describe('Acme.Sound')"));
    EXPECT_EQ(scripts.Run("describe()"), scripts.Run("describe('')"));
    EXPECT_THAT(scripts.Failure("describe('Nowhere')").what(),
                testing::StartsWith("Nothing is called Nowhere"));
    EXPECT_THAT(scripts.Failure("describe(5)").what(), testing::HasSubstr("describe: expected a class"));
}

} // namespace
