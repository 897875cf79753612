#include "support/TraceRecorder.h"

#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

using namespace kiocore::config;

TEST(Client, TakesVersionsOfNumbersAndDotsOnly)
{
    EXPECT_EQ(GetSuiteClientVersion_NumberOnly(), u"14.0");
    const unsigned before = GetClientChangeCount();
    for (const char16_t* bad : {u"", u".", u"v14", u"14.", u".5", u"14..0", u"14.0b", u"14 "}) {
        EXPECT_THROW(SetSuiteClientVersion(bad), kiocore::kio_exception) << kiocore::utility::ToUTF8(bad);
    }
    EXPECT_EQ(GetClientChangeCount(), before);
    SetSuiteClientVersion(u"13.5.2");
    EXPECT_EQ(GetSuiteClientVersion_NumberOnly(), u"13.5.2");
    EXPECT_NE(GetClientChangeCount(), before);
    SetSuiteClientVersion(u"14.0");
}

TEST(ThrowError, ShowsTheFirstValueInPlaceOfTheFirstParameter)
{
    EXPECT_EQ(GetClientName(), u"Media Host");
    SetClientName(u"Schnittplatz ^2");
    const struct {
        const char* name;
        const char* text;
        int numberA;
        int numberB;
        std::string expected;
    } kCases[] = {
        {"client name, which is not searched for parameters",
         "$$$/Vireo/FrontEnd/AppStartupNoSSE=^1 cannot run on this computer because the processor does not "
         "support "
         "the SSE instruction set.",
         0, 0,
         "Schnittplatz ^2 cannot run on this computer because the processor does not support the SSE "
         "instruction "
         "set."},
        {"four values and two numbers", "$$$/T/Four=^4^3^2^1^5", 3, 17, "dcbSchnittplatz ^2^5 (3, 17)"},
        {"one number", "$$$/T/One=Broken", 0, 5, "Broken (5)"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TraceRecorder trace("Errors");
        try {
            ThrowError(0, test.text, test.numberA, test.numberB, true, GetClientName(), u"b", u"c", u"d");
        } catch (const kiocore::kio_exception& exception) {
            EXPECT_EQ(exception.what(), test.expected);
            EXPECT_EQ(exception.Code(), kiocore::kError_Startup);
        }
        EXPECT_EQ(trace.CountContaining("Fatal error of level 0: " + test.expected), 1);
    }
    SetClientName(u"Media Host");
}
