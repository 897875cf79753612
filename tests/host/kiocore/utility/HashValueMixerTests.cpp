#include <kiocore/utility/HashValueMixer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

TEST(HashValueMixer, PiecesMakeNoDifference)
{
    std::vector<std::byte> bytes(1000);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        bytes[index] = static_cast<std::byte>(index * 31 + (index >> 3));
    }
    // Around the end of the short way, and far beyond.
    for (const std::size_t size : {0, 1, 77, 239, 240, 241, 480, 1000}) {
        const auto whole = kiocore::Guid::FromHash(std::span(bytes).first(size));
        for (const std::size_t piece : {1, 7, 240, 1000}) {
            SCOPED_TRACE(std::to_string(size) + " in pieces of " + std::to_string(piece));
            kiocore::HashValueMixerState state;
            for (std::size_t done = 0; done < size; done += piece) {
                kiocore::UpdateHashState(state, bytes.data() + done, std::min(piece, size - done));
            }
            EXPECT_EQ(kiocore::GetHashResult(state), whole);
            kiocore::UpdateHashState(state, "x", 1); // more may follow an answer
            EXPECT_NE(kiocore::GetHashResult(state), whole);
        }
    }
}

} // namespace
