#include "ScriptRunner.h"

namespace {

TEST(ScriptClasses, LookLikeClassesOfTheLanguage)
{
    ScriptRunner scripts;
    const struct {
        const char* name;
        const char* script;
        std::string expected;
    } kCases[] = {
        {"made with and without what may be left out",
         "[new Acme.Sound.Level(-6).decibels, new Acme.Sound.Level().decibels]", "[ -6, 0 ]"},
        {"instanceof", "new Acme.Sound.Level() instanceof Acme.Sound.Level", "true"},
        {"name and length of the class", "Acme.Sound.Level.name + Acme.Sound.Level.length", "\"Level0\""},
        {"name and length of a method",
         "Acme.Sound.Level.prototype.above.name + Acme.Sound.Level.prototype.above.length", "\"above1\""},
        {"tag", "String(L)", "\"[object Level]\""},
        {"constructor", "L.constructor === Acme.Sound.Level", "true"},
        {"properties in the order of registration", "{ let k = []; for (const n in L) k.push(n); k }",
         "[ \"decibels\", \"label\", \"peak\", \"twin\" ]"},
        {"properties are the prototype's",
         "typeof Object.getOwnPropertyDescriptor(Acme.Sound.Level.prototype, 'label').get + "
         "Object.keys(L).length",
         "\"function0\""},
        {"a property is read-only in strict code", "'use strict'; try { L.label = 'x' } catch (e) { e.name }",
         "\"TypeError\""},
        {"and ignored in other code", "L.decibels = 5; L.decibels", "0"},
        {"methods", "new Acme.Sound.Level(2).above(new Acme.Sound.Level(1))", "true"},
        {"derived",
         "class Mine extends Acme.Sound.Level { constructor() { super(-3) } twice() { return 2 * "
         "this.decibels } }; const m = new Mine(); [m.twice(), m instanceof Acme.Sound.Level, m.above(L)]",
         "[ -6, true, false ]"},
        {"a class that natives alone make", "new Acme.Sound.Meter()",
         "! test.js:1:21: TypeError: Acme.Sound.Meter has no constructor for scripts"},
        {"without new", "Acme.Sound.Level()",
         "! test.js:1:17: TypeError: Cannot call a class constructor without |new|"},
        {"a method of another class's object",
         "Acme.Sound.Level.prototype.itself.call(new Halcyon.Guid("
         "'102bfb4c-1980-4e77-87df-17b03d5b09db'))",
         "! test.js:1:39: TypeError: Level.itself is for objects of class Level only, found one of class "
         "Guid"},
        {"a method of no object", "const f = L.itself; f()",
         "! test.js:1:22: TypeError: Level.itself is for objects of class Level only, found another value"},
        {"a property of the prototype", "Acme.Sound.Level.prototype.label",
         "! test.js:1:27: TypeError: Level.label is for objects of class Level only, found another value"},
        {"a proxy is not the object", "new Proxy(L, {}).label",
         "! test.js:1:17: TypeError: Level.label is for objects of class Level only, found another value"},
        {"too many arguments", "L.itself(1)", "! test.js:1:9: Level.itself: expected (), found 1 argument"},
        {"wrong argument", "L.above('x')",
         "! test.js:1:8: Level.above: argument other: expected Level, found string"},
        {"an argument of a class that is not the expected one",
         "L.above(new Halcyon.Guid('102bfb4c-1980-4e77-87df-17b03d5b09db'))",
         "! test.js:1:8: Level.above: argument other: expected Level, found Guid"},
        {"one native is one object", "L.itself() === L && L.twin === L.twin && L.twin !== L", "true"},
        {"texts that change",
         "{ const s = []; for (let i = 0; i < 4; ++i) { L.set(i >> 1); s.push(L.label) } "
         "L.set(0); s }",
         "[ \"0 dB \xE2\x99\xAA\", \"0 dB \xE2\x99\xAA\", \"1 dB \xE2\x99\xAA\", \"1 dB \xE2\x99\xAA\" ]"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(scripts.Text(test.script), test.expected);
    }
}

TEST(ScriptClasses, AreSeenWhenRegisteredLater)
{
    ScriptRunner scripts;
    EXPECT_EQ(scripts.Text("typeof Acme.Late"), "\"undefined\"");
    const kioscripting::factory::ScriptObjectDefinitionInitiator late(&script_classes::DefineExtra);
    EXPECT_EQ(scripts.Text("String(new Acme.Late())"), "\"[object Late]\"");
}

TEST(ScriptClasses, OfNobodyAreNoValues)
{
    ScriptRunner scripts;
    try {
        scripts.engine->SetGlobal("s", kioscripting::ScriptObjectPtr(new script_classes::Stranger()));
        FAIL();
    } catch (const kiocore::kio_exception& error) {
        EXPECT_STREQ(error.what(),
                     "The class Stranger is not registered, so scripts cannot have its objects");
    }
}

} // namespace
