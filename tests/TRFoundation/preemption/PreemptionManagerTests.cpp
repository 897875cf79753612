#include "Schedule.h"
#include "ScriptedDevice.h"

#include "support/TraceRecorder.h"

#include <TR/PreemptionManager.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Contract.h>
#include <kiocore/utility/Guid.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using kiocore::InterfaceRef;
using kiocore::classref::MakeObject;
using support::ScriptedDevice;
using testing::ElementsAre;

class PreemptionManagerTest : public testing::Test {
protected:
    std::vector<std::string> mNotes;
    InterfaceRef<TR::PreemptionManager> mManager = TR::CreatePreemptionManager();
    InterfaceRef<ScriptedDevice> mA = MakeObject<ScriptedDevice>("a", mNotes);
    InterfaceRef<ScriptedDevice> mB = MakeObject<ScriptedDevice>("b", mNotes);
};

TEST_F(PreemptionManagerTest, PrioritiesDecideWhoIsAsked)
{
    const struct {
        const char* name;
        std::uint32_t holder;
        std::uint32_t newcomer;
        bool holderIsAsked;
    } kCases[] = {
        {"a player after a stopped recorder: equals go to the newcomer",
         TR::IPreemptableProxy::kPriorityRecorderStopped, TR::IPreemptableProxy::kPriorityPlayer, true},
        {"a recording recorder after a player", TR::IPreemptableProxy::kPriorityPlayer,
         TR::IPreemptableProxy::kPriorityRecorderRecording, true},
        {"a player after a recording recorder simply replaces it",
         TR::IPreemptableProxy::kPriorityRecorderRecording, TR::IPreemptableProxy::kPriorityPlayer, false},
        {"numbers are unsigned", 0xFFFFFFFF, 1, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        mA->priority = test.holder;
        mB->priority = test.newcomer;
        EXPECT_TRUE(mManager->ActivateDevice(mA));
        mNotes.clear();
        EXPECT_TRUE(mManager->ActivateDevice(mB));
        if (test.holderIsAsked) {
            EXPECT_THAT(mNotes,
                        ElementsAre("b.priority", "a.priority", "a.key", "a.preempt", "b.key", "b.activate"));
        } else {
            EXPECT_EQ((std::vector<std::string>(mNotes.begin(), mNotes.begin() + 2)),
                      (std::vector<std::string>{"b.priority", "a.priority"}));
            EXPECT_EQ(mNotes.back(), "b.activate");
        }
        EXPECT_TRUE(mManager->IsActiveDevice(mB));
        EXPECT_FALSE(mManager->IsActiveDevice(mA));
        mManager->Shutdown();
        mNotes.clear();
    }
}

TEST_F(PreemptionManagerTest, AnEmptyDeviceBreaksTheContractAndChangesNothing)
{
    mManager->ActivateDevice(mA);
    const support::TraceRecorder trace("Assert");
    try {
        mManager->ActivateDevice(nullptr);
        FAIL() << "no exception";
    } catch (const kiocore::input_contract_exception& error) {
        EXPECT_STREQ(error.what(), "An input contract violation has occurred!");
    }
    EXPECT_THAT(trace.Lines(), ElementsAre(testing::AllOf(
                                   testing::HasSubstr("inDevice != __null"),
                                   testing::HasSubstr("bool TR::PreemptionManager::ActivateDevice(const "
                                                      "TR::IPreemptableProxyRef &)"),
                                   testing::HasSubstr("PreemptionManager/PreemptionManager"))));
    EXPECT_TRUE(mManager->IsActiveDevice(mA));

    EXPECT_NO_THROW(mManager->DeactivateDevice(nullptr)); // another than the holder
    mManager->Shutdown();
    try {
        mManager->DeactivateDevice(nullptr); // no device equals none
        FAIL() << "no exception";
    } catch (const kiocore::null_reference_exception& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("TR::IPreemptableProxy"));
    }
}

TEST_F(PreemptionManagerTest, WhatADeviceThrowsLeavesItPendingAndTheHolderInPlace)
{
    mManager->ActivateDevice(mA);
    mA->onPreempt = [] { throw std::runtime_error("no hardware"); };
    EXPECT_THROW(mManager->ActivateDevice(mB), std::runtime_error);
    EXPECT_TRUE(mManager->IsActiveDevice(mA));
    EXPECT_TRUE(mManager->ActivateDevice(mB)); // "in progress" still
    EXPECT_FALSE(mManager->IsActiveDevice(mB));
}

TEST_F(PreemptionManagerTest, ThereIsOneWhileSomebodyHoldsIt)
{
    EXPECT_EQ(TR::PreemptionManager::CreateClassRefInternal(false), mManager);
    mManager->ActivateDevice(mA);
    const std::weak_ptr<kiocore::classref::UnknownBase> device = mA.Identity();
    mA.Reset();
    EXPECT_FALSE(device.expired());

    InterfaceRef<kiocore::classref::UnknownBase> unknown = *mManager;
    EXPECT_TRUE(unknown == mManager);
    CFUUIDBytes classID;
    const kiocore::Guid::Bytes bytes = kiocore::Guid("0D59AA44-1B43-4C85-9E7C-A4608D16C76B").AsBytes();
    std::copy(bytes.begin(), bytes.end(), classID.bytes);
    EXPECT_EQ(unknown->QueryMap(classID), mManager.Get());
    EXPECT_EQ(unknown->QueryMap(CFUUIDBytes{}), nullptr);

    unknown.Reset();
    mManager.Reset();
    EXPECT_TRUE(device.expired());
    EXPECT_FALSE(TR::PreemptionManager::CreateClassRefInternal(false));
    EXPECT_FALSE(TR::CreatePreemptionManager()->IsActiveDevice(mB));
}

TEST(PreemptionSchedules, FollowTheModel)
{
    constexpr int kSchedules = 2000;
    std::mt19937 random(20261121);
    std::vector<std::uint8_t> steps(60);
    for (int schedule = 0; schedule < kSchedules; ++schedule) {
        for (std::uint8_t& step : steps) {
            step = static_cast<std::uint8_t>(random());
        }
        ASSERT_EQ(support::PlaySchedule(steps), "") << "schedule " << schedule;
    }
}

} // namespace
