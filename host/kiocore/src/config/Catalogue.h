#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kiocore::config {

/// A gettext catalogue in its binary form (.mo), of either byte order, in UTF-8.
///
/// Threading: immutable once made.
class Catalogue {
public:
    /// @param inName  for reports.
    /// @throws kio_exception (kError_DamagedData) with the name and what is wrong.
    Catalogue(std::string inBytes, const std::string& inName);
    Catalogue(const Catalogue&) = delete; // the texts point into the bytes
    Catalogue& operator=(const Catalogue&) = delete;

    /// The translation of a message under a context; empty when there is none.
    std::optional<std::string_view> Find(std::string_view inContext, std::string_view inMessage) const;

private:
    const std::string mBytes;
    std::unordered_map<std::string_view, std::string_view> mTexts; // by context, 0x04, message
};

} // namespace kiocore::config
