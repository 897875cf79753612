#include "ScriptRunner.h"

#include <pthread.h>

namespace {

TEST(ScriptThreads, HaveEnginesOfTheirOwn)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            ScriptRunner scripts;
            const std::string number = std::to_string(i);
            EXPECT_EQ(scripts.Text("var mine = " + number +
                                   "; for (let i = 0; i < 3000; ++i) mine += new "
                                   "Acme.Sound.Level(1).twin.decibels; mine - 3000"),
                      number);
            EXPECT_THAT(scripts.Failure("(function f() { f() })()").what(),
                        testing::StartsWith("RangeError"));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ScriptThreads, MayHandAnEngineOn)
{
    ScriptRunner scripts;
    scripts.Run("var l = new Acme.Sound.Level(3); 0");
    std::thread([&] {
        EXPECT_EQ(scripts.Text("l.decibels"), "3");
        scripts.engine->CollectGarbage();
    }).join();
    EXPECT_EQ(scripts.Text("l.above(L)"), "true");
}

void OnStackOf(std::size_t inKilobytes, void* (*inFunction)(void*))
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, inKilobytes * 1024), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, inFunction, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(ScriptThreads, WithSmallStacksFailCleanly)
{
    for (const std::size_t kilobytes : {64, 128, 192, 256, 512}) {
        SCOPED_TRACE(kilobytes);
        OnStackOf(kilobytes, [](void*) -> void* {
            try {
                ScriptRunner scripts;
                for (const char* script :
                     {"(function f() { f() })()", "(function f() { L.echo({ get a() { f() } }) })()",
                      "let o = {}; for (let i = 0; i < 1e5; ++i) o = [o]; JSON.stringify(o)",
                      "(function f() { [1, 2].sort(f) })()"}) {
                    EXPECT_EQ(scripts.Failure(script).Code(), kioscripting::kError_Script) << script;
                }
            } catch (const kiocore::kio_exception& error) {
                EXPECT_EQ(error.Code(), kiocore::kError_Startup) << error.what();
            }
            return nullptr;
        });
    }
}

} // namespace
