#include "ScriptRunner.h"

namespace {

using kioscripting::CountLiveObjects;
using script_classes::Meter;

TEST(ScriptLifetime, NativesAreLetGoWithTheEngineWhateverHoldsThem)
{
    const char* const kLeaks[] = {
        "var kept = new Acme.Sound.Level()",
        "const many = []; for (let i = 0; i < 1000; ++i) many.push(new Acme.Sound.Level(i))",
        "globalThis.f = (l => () => l)(new Acme.Sound.Level())",
        "const a = { l: new Acme.Sound.Level() }; a.a = a; globalThis.a2 = a",
        "const l = new Acme.Sound.Level(); l.own = l.twin; l.twin.back = l; globalThis.l2 = l",
        "globalThis.p = new Promise(() => {}); p.l = new Acme.Sound.Level(); 0",
        "const w = new WeakMap(); const k = {}; w.set(k, new Acme.Sound.Level()); globalThis.wk = [w, k]; 0",
        ("function* g() { const l = new Acme.Sound.Level(); yield l; yield l } globalThis.i = g(); i.next(); "
         "0"),
        "for (let i = 0; i < 20000; ++i) new Acme.Sound.Level(i).label; 0",
    };
    for (const char* const leak : kLeaks) {
        SCOPED_TRACE(leak);
        int context = 0;
        {
            ScriptRunner scripts;
            context = scripts.engine->GetContextHdl();
            scripts.Run(std::string(leak) + "; 0");
            EXPECT_GT(CountLiveObjects(context), 0);
        }
        EXPECT_EQ(CountLiveObjects(context), 0);
    }
}

TEST(ScriptLifetime, UnusedNativesAreLetGoBefore)
{
    ScriptRunner scripts;
    const int context = scripts.engine->GetContextHdl();
    scripts.Run("for (let i = 0; i < 20000; ++i) new Acme.Sound.Level(i).twin; 0");
    scripts.engine->CollectGarbage();
    EXPECT_LT(CountLiveObjects(context), 100); // what lies about on the stack may stay
    EXPECT_EQ(scripts.Text("L.twin === L.twin"), "true");
}

TEST(ScriptLifetime, ValuesThatLeaveTheEngineOutliveIt)
{
    kioscripting::Value value;
    int context = 0;
    {
        ScriptRunner scripts;
        context = scripts.engine->GetContextHdl();
        value = scripts.Run("new Acme.Sound.Level(-9)");
    }
    EXPECT_EQ(CountLiveObjects(context), 1);
    EXPECT_EQ(kioscripting::ReadProperty(**value.As<kioscripting::ScriptObjectPtr>(), "decibels"),
              kioscripting::Value(-9));
    value = {};
    EXPECT_EQ(CountLiveObjects(context), 0);
}

TEST(ScriptLifetime, DestructorsMayDoAnything)
{
    int destroyed = 0;
    Meter::sDestroyed = [&] {
        ++destroyed;
        ScriptRunner another;
        EXPECT_EQ(another.Text("new Acme.Sound.Level(1).decibels"), "1");
    };
    {
        ScriptRunner scripts;
        scripts.engine->SetGlobal(
            "meter", kioscripting::ScriptObjectPtr(
                         kioscripting::CreateScriptObject<Meter>(scripts.engine->GetContextHdl())));
        EXPECT_EQ(destroyed, 0);
    }
    Meter::sDestroyed = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(ScriptLifetime, ANativeMayEvaluateInItsOwnEngine)
{
    ScriptRunner scripts;
    scripts.engine->SetGlobal("meter", kioscripting::ScriptObjectPtr(kioscripting::CreateScriptObject<Meter>(
                                           scripts.engine->GetContextHdl())));
    Meter::sCalled = [&] { EXPECT_EQ(scripts.Run("inner = 5"), kioscripting::Value(5)); };
    EXPECT_EQ(scripts.Text("var inner = 1; meter.call(); inner"), "5");
    Meter::sCalled = [&] { scripts.Run("throw new Error('within')"); };
    EXPECT_EQ(scripts.Text("try { meter.call() } catch (e) { e.message }"), "\"within\"");
    Meter::sCalled = nullptr;
}

} // namespace
