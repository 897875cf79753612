#include "ScriptClasses.h"

#include <kioscripting/Context.h>

#include <gtest/gtest.h>

namespace {

using kioscripting::CountLiveObjects;
using kioscripting::CreateScriptObject;
using script_classes::Level;

TEST(ScriptContext, MakesAndCountsObjectsWhileItIsOpen)
{
    const int context = kioscripting::OpenContext();
    EXPECT_GT(context, 0);
    EXPECT_TRUE(kioscripting::IsContextOpen(context));
    script_classes::LevelPtr level = CreateScriptObject<Level>(context);
    ASSERT_TRUE(level);
    EXPECT_EQ(level->GetContextHdl(), context);
    EXPECT_EQ(CountLiveObjects(context), 1);
    kioscripting::CloseContext(context);
    kioscripting::CloseContext(context);
    EXPECT_FALSE(kioscripting::IsContextOpen(context));
    EXPECT_FALSE(CreateScriptObject<Level>(context));
    EXPECT_EQ(CountLiveObjects(context), 1);
    level.reset();
    EXPECT_EQ(CountLiveObjects(context), 0);
    EXPECT_NE(kioscripting::OpenContext(), context);
}

TEST(ScriptContext, DoesNotCountWhatItDidNotMake)
{
    const script_classes::LevelPtr level(new Level());
    EXPECT_EQ(level->GetContextHdl(), 0);
    EXPECT_EQ(CountLiveObjects(0), 0);
    EXPECT_FALSE(CreateScriptObject<Level>(0));
    EXPECT_FALSE(CreateScriptObject<Level>(-1));
    EXPECT_FALSE(CreateScriptObject<script_classes::Stranger>(kioscripting::OpenContext()));
}

TEST(ScriptContext, IsLetGoOfOnAnyThread)
{
    const int context = kioscripting::OpenContext();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([context] {
            for (int round = 0; round < 500; ++round) {
                EXPECT_TRUE(CreateScriptObject<Level>(context));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(CountLiveObjects(context), 0);
    kioscripting::CloseContext(context);
}

} // namespace
