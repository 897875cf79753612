#include <ZOL/RegistryBaseKey.h>

#include <kiocore/config/Client.h>

#include <gtest/gtest.h>

namespace ZOL {
namespace {

class RegistryBaseKey : public testing::Test {
protected:
    void TearDown() override
    {
        kiocore::config::SetClientName(mName);
        kiocore::config::SetSuiteClientVersion(mVersion);
    }

private:
    const kiocore::UTF16String mName = kiocore::config::GetClientName();
    const kiocore::UTF16String mVersion = kiocore::config::GetSuiteClientVersion_NumberOnly();
};

TEST_F(RegistryBaseKey, FollowsTheClientAndAddsNoNamesOfItsOwn)
{
    const struct {
        const char* name;
        const char16_t* client;
        const char16_t* version;
        const char16_t* expected;
    } kCases[] = {
        {"as it is until set", u"Media Host", u"14.0", u"Software\\Halcyon\\Media Host\\14.0\\"},
        {"another host", u"Schnittplatz Süd/2", u"13.5.2",
         u"Software\\Halcyon\\Schnittplatz Süd/2\\13.5.2\\"},
        {"a separator in the name", u"a\\b\\", u"1", u"Software\\Halcyon\\a_b_\\1\\"},
        {"no name", u"", u"1", u"Software\\Halcyon\\Media Host\\1\\"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        kiocore::config::SetClientName(test.client);
        kiocore::config::SetSuiteClientVersion(test.version);
        EXPECT_EQ(GetRegistryBaseKey(), test.expected);
    }
}

} // namespace
} // namespace ZOL
