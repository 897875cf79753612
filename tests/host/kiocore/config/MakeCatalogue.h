#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The bytes of a binary catalogue. Keys are context, 0x04, message.
inline std::string MakeCatalogue(const std::vector<std::pair<std::string, std::string>>& inTexts,
                                 bool inBigEndian = false)
{
    const auto number = [&](std::size_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i) {
            bytes += static_cast<char>(value >> 8 * (inBigEndian ? 3 - i : i) & 0xFF);
        }
        return bytes;
    };
    const std::size_t count = inTexts.size();
    const std::size_t tables = 28;
    std::size_t textAt = tables + 16 * count;
    std::string messages, translations, texts;
    for (bool translation : {false, true}) {
        for (const auto& [message, translated] : inTexts) {
            const std::string& text = translation ? translated : message;
            (translation ? translations : messages) += number(text.size()) + number(textAt);
            texts += text + '\0';
            textAt += text.size() + 1;
        }
    }
    return number(0x950412DE) + number(0) + number(count) + number(tables) + number(tables + 8 * count) +
           number(0) + number(0) + messages + translations + texts;
}
