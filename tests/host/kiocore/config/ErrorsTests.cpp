#include "support/TraceRecorder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <gtest/gtest.h>

using kiocore::kio_exception;

TEST(KioException, TellsLogsWhereItWasThrownAndPeopleOnlyItsText)
{
    try {
        throw kio_exception("Crashed plugin file does not exist", 0xA00F0003)
            .At("Detection", "!file.Exists()");
    } catch (const kiocore::config::kio_exception& exception) {
        EXPECT_EQ(exception.Text(), u"Crashed plugin file does not exist");
        EXPECT_STREQ(exception.what(), "Crashed plugin file does not exist");
        EXPECT_EQ(exception.Code(), 0xA00F0003u);
        EXPECT_STREQ(exception.Source(), "Detection");
        EXPECT_STREQ(exception.FailedCondition(), "!file.Exists()");
        EXPECT_EQ(exception.Place(), "Detection: !file.Exists()");

        support::TraceRecorder trace("Threads", 1);
        kiocore::threads::ReportException("A task");
        EXPECT_EQ(trace.CountContaining("Crashed plugin file does not exist [Detection: !file.Exists()]"), 1);
    }
    EXPECT_EQ(kio_exception("text", 1).Place(), "");
}
