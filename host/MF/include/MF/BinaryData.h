#pragma once

#include <kiocore/Export.h>

#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace MF {

/// A run of bytes that a record holds.
///
/// Threading: a plain value.
class BinaryData {
public:
    BinaryData() = default;
    BinaryData(const void* inBytes, std::size_t inSize)
        : mBytes(static_cast<const std::byte*>(inBytes), static_cast<const std::byte*>(inBytes) + inSize)
    {}

    const std::byte* GetData() const { return mBytes.data(); }
    std::byte* GetData() { return mBytes.data(); }
    std::size_t GetSize() const { return mBytes.size(); }
    /// New bytes are zero.
    void SetSize(std::size_t inSize) { mBytes.resize(inSize); }
    void Assign(const void* inBytes, std::size_t inSize)
    {
        const auto* bytes = static_cast<const std::byte*>(inBytes);
        mBytes.assign(bytes, bytes + inSize);
    }
    std::span<const std::byte> AsSpan() const { return mBytes; }

    friend bool operator==(const BinaryData&, const BinaryData&) = default;

private:
    std::vector<std::byte> mBytes;
};

/// The bytes as text, in base64 (RFC 4648, with padding, in one line).
KIO_EXPORT std::string EncodeBinaryDataToUTF8String(const BinaryData& inData);

} // namespace MF
