#include "config/Catalogue.h"

#include <kiocore/config/Errors.h>

#include <cstdint>

namespace kiocore::config {
namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr char kContextEnd = '\x04';
constexpr std::size_t kHeaderBytes = 28;
constexpr std::size_t kTableRowBytes = 8; // length, offset

/// Reads numbers and texts out of the file's bytes; every access is checked.
class Reader {
public:
    Reader(std::string_view inBytes, const std::string& inName) : mBytes(inBytes), mName(inName)
    {
        if (mBytes.size() < kHeaderBytes) {
            Fail("has " + std::to_string(mBytes.size()) + " bytes; a catalogue has at least " +
                 std::to_string(kHeaderBytes));
        }
        if (Number(0) != kMagic) {
            mBigEndian = true;
            if (Number(0) != kMagic) {
                Fail("does not begin with a catalogue's magic number");
            }
        }
    }

    [[noreturn]] void Fail(const std::string& inWhat) const
    {
        throw kio_exception("Catalogue " + mName + " " + inWhat, kError_DamagedData);
    }

    std::uint32_t Number(std::uint64_t inOffset) const
    {
        if (inOffset + 4 > mBytes.size()) {
            Fail("ends before byte " + std::to_string(inOffset + 4));
        }
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto byte = static_cast<unsigned char>(mBytes[inOffset + i]);
            number |= std::uint32_t{byte} << 8 * (mBigEndian ? 3 - i : i);
        }
        return number;
    }

    /// The text that a table's row denotes, up to its first zero byte: what follows one are plural forms.
    std::string_view Text(std::uint64_t inRow)
    {
        const std::uint64_t length = Number(inRow);
        const std::uint64_t offset = Number(inRow + 4);
        if (offset + length >= mBytes.size() || mBytes[offset + length] != '\0') {
            Fail("has a text of " + std::to_string(length) + " bytes at " + std::to_string(offset) +
                 " that does not end with a zero byte within its " + std::to_string(mBytes.size()) +
                 " bytes");
        }
        // Rows that share bytes would let a small file cost any amount of time.
        mTextBytes += length + 1;
        if (mTextBytes > mBytes.size()) {
            Fail("has texts that overlap");
        }
        const std::string_view text = mBytes.substr(offset, length);
        return text.substr(0, text.find('\0'));
    }

private:
    const std::string_view mBytes;
    const std::string& mName;
    bool mBigEndian = false;
    std::uint64_t mTextBytes = 0;
};

// The translation of the empty message is the catalogue's own header, a line for each property.
void RequireUTF8(const Reader& inReader, std::string_view inHeader)
{
    constexpr std::string_view kCharset = "charset=";
    const std::size_t at = inHeader.find(kCharset);
    if (at == std::string_view::npos) {
        return;
    }
    const std::string_view rest = inHeader.substr(at + kCharset.size());
    const std::string charset(rest.substr(0, rest.find_first_of(" ;\r\n")));
    if (charset != "UTF-8" && charset != "utf-8" && charset != "US-ASCII" && charset != "ASCII") {
        inReader.Fail("is written in " + charset + "; expected UTF-8");
    }
}

} // namespace

Catalogue::Catalogue(std::string inBytes, const std::string& inName) : mBytes(std::move(inBytes))
{
    Reader reader(mBytes, inName);
    if (const std::uint32_t version = reader.Number(4); version >> 16 > 1) {
        reader.Fail("has format version " + std::to_string(version >> 16) + "; this build reads up to 1");
    }
    const std::uint64_t count = reader.Number(8);
    const std::uint64_t messages = reader.Number(12);
    const std::uint64_t translations = reader.Number(16);
    for (std::uint64_t table : {messages, translations}) {
        if (table + count * kTableRowBytes > mBytes.size()) {
            reader.Fail("claims " + std::to_string(count) + " texts, more than fit into its " +
                        std::to_string(mBytes.size()) + " bytes");
        }
    }
    mTexts.reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::string_view message = reader.Text(messages + i * kTableRowBytes);
        const std::string_view translation = reader.Text(translations + i * kTableRowBytes);
        if (!mTexts.emplace(message, translation).second) {
            reader.Fail("has the message \"" + std::string(message) + "\" twice");
        }
        if (message.empty()) {
            RequireUTF8(reader, translation);
        }
    }
}

std::optional<std::string_view> Catalogue::Find(std::string_view inContext, std::string_view inMessage) const
{
    std::string key;
    key.reserve(inContext.size() + 1 + inMessage.size());
    key.append(inContext).append(1, kContextEnd).append(inMessage);
    const auto found = mTexts.find(key);
    if (found == mTexts.end() || found->second.empty()) {
        return std::nullopt; // an empty translation is one that nobody has written yet
    }
    return found->second;
}

} // namespace kiocore::config
