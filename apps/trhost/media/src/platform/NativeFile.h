#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace trhost::media {

/// A path as messages show it: on one line, whatever bytes it has.
std::string ShownPath(const std::string& inNativePath);

/// The media file, read in order with jumps.
///
/// Threading: one thread at a time.
class InputFile {
public:
    /// @throws file_exception; kio_exception (kMediaError_NotMedia) when it is no regular file or is empty.
    explicit InputFile(const std::string& inNativePath);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// @return bytes read, 0 at the end, or the system's error number, negated.
    int Read(std::uint8_t* outBytes, int inSize) noexcept;
    void Seek(std::int64_t inPosition) noexcept { mPosition = inPosition; }
    std::int64_t Position() const noexcept { return mPosition; }
    std::int64_t Size() const noexcept { return mSize; }

private:
    int mDescriptor = -1;
    std::int64_t mPosition = 0;
    std::int64_t mSize = 0;
};

/// A file in the making, under a temporary name beside its final one; removed unless it is published.
///
/// Threading: one thread at a time. All members but the destructor throw file_exception.
class OutputFile {
public:
    explicit OutputFile(const std::string& inFinalPath);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends.
    void Write(const void* inBytes, std::size_t inSize);
    void WriteAt(std::int64_t inPosition, const void* inBytes, std::size_t inSize);
    std::int64_t Size() const { return mSize; }
    /// After this nothing of it can fail but the renaming.
    void Close();
    /// Gives it its final name. It stays removable until KeepPublished.
    void Publish();
    void KeepPublished() { mCurrentPath.clear(); }

private:
    const std::string mFinalPath;
    std::string mCurrentPath; // what the destructor removes
    int mDescriptor = -1;
    std::int64_t mSize = 0;
};

} // namespace trhost::media
