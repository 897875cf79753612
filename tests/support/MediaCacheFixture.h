#pragma once

#include "support/TemporaryFolder.h"

#include <TR/MediaAcceleratorDatabase.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// The library up and running on preferences below a temporary folder, with a resolver that knows what the
/// test tells it. One at a time.
class MediaCacheFixture : public ::testing::Test {
protected:
    MediaCacheFixture();
    ~MediaCacheFixture() override;

    /// A cache file with some contents; its path in the host's form.
    kiocore::UTF16String MakeCacheFile(std::string_view inName, std::string_view inBytes = "cache");
    /// Adds a fresh cache file to a document of media "/media/<inName>".
    int AddItem(const kiocore::Guid& inDocument, const kiocore::Guid& inState, unsigned long inStream,
                const kiocore::UTF16String& inKey, const kiocore::UTF16String& inCacheFile);
    std::filesystem::path DatabaseFolder() const;
    std::filesystem::path CacheFolder() const;
    /// The record file of a document under a suffix such as "3584".
    std::filesystem::path RecordFile(const kiocore::Guid& inDocument,
                                     std::string_view inSuffix = "3584") const;
    /// Lets memory go, so that the next look-up reads files.
    static void ForgetMemory();

    /// What the resolver answers for a path; unknown paths give -1.
    void SetMedia(const kiocore::UTF16String& inPath, const kiocore::Guid& inDocument,
                  const kiocore::Guid& inState);

    TemporaryFolder mFolder;
    kiocore::InterfaceRef<TR::IMediaAcceleratorDatabase> mDatabase;
};

/// An identifier that differs for each number.
kiocore::Guid NumberedGuid(unsigned inNumber);

/// Every file below a folder with its size, inode and modification time: equal listings mean that nothing
/// was touched.
std::map<std::string, std::string> Listing(const std::filesystem::path& inFolder);

} // namespace support
