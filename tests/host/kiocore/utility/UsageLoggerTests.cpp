#include "support/TraceRecorder.h"

#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UsageLogger.h>

#include <gtest/gtest.h>

using kiocore::utility::UsageLogger;

TEST(UsageLogger, EachRunHasAnIdentifierAndItsNotesStayHere)
{
    EXPECT_EQ(UsageLogger::Get(), nullptr);
    const auto logger = std::make_shared<UsageLogger>();
    EXPECT_TRUE(kiocore::utility::Guid::FromText(logger->GetSessionID()));
    EXPECT_NE(UsageLogger().GetSessionID(), logger->GetSessionID());
    UsageLogger::Set(logger);
    EXPECT_EQ(UsageLogger::Get(), logger);
    support::TraceRecorder trace("Usage", 1);
    UsageLogger::Get()->Log("effect applied");
    EXPECT_EQ(trace.Lines(), std::vector<std::string>{logger->GetSessionID() + " effect applied"});
    UsageLogger::Set(nullptr);
    EXPECT_EQ(UsageLogger::Get(), nullptr);
    EXPECT_EQ(UsageLogger("mine").GetSessionID(), "mine");
}
