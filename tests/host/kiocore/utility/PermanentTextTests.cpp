#include <kiocore/utility/PermanentText.h>

#include <kiocore/exceptions/MachineException.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using kiocore::ImmutableString;
using kiocore::utility::MakePermanentText;

TEST(PermanentText, IsOneForEachTextWhoeverMakesIt)
{
    const std::string large(200'000, 'x');
    std::vector<std::vector<ImmutableString>> made(4);
    std::vector<std::thread> threads;
    for (auto& texts : made) {
        threads.emplace_back([&] {
            for (int i = 0; i < 3000; ++i) {
                texts.push_back(
                    MakePermanentText("a text that is longer than an inline one " + std::to_string(i)));
            }
            texts.push_back(MakePermanentText(large));
            texts.push_back(MakePermanentText(""));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& texts : made) {
        ASSERT_EQ(texts.size(), made[0].size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            ASSERT_EQ(texts[i].CString(), made[0][i].CString());
        }
        EXPECT_EQ(texts[17], "a text that is longer than an inline one 17");
        EXPECT_EQ(texts[3000], large);
        EXPECT_STREQ(texts[3001].CString(), "");
    }
}

TEST(PermanentText, CannotBeWrittenTo)
{
    const ImmutableString text = MakePermanentText("nobody overwrites this by mistake");
    EXPECT_THROW(kiocore::exceptions::GuardMachineExceptions(
                     [&] { *const_cast<volatile char*>(text.CString()) = 'X'; }),
                 kiocore::exceptions::machine_exception);
    EXPECT_EQ(text, "nobody overwrites this by mistake");
}

} // namespace
