#include "WaveFile.h"

#include "../support/LocalText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/TemporaryFile.h>

#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace trhost::devices {
namespace {

using kiocore::filesupport::GetFileCalls;

static_assert(std::endian::native == std::endian::little, "WAVE files are little-endian");

constexpr std::size_t kBufferBytes = 128 * 1024;
constexpr std::uint32_t kTooLong = 0xFFFFFFFF;
constexpr std::uint16_t kTag_PCM = 1;
constexpr std::uint16_t kTag_Float = 3;
constexpr std::uint16_t kTag_Extensible = 0xFFFE;

class Bytes {
public:
    void Text(const char* inFour) { mBytes.insert(mBytes.end(), inFour, inFour + 4); }
    void Number(std::uint64_t inValue, int inBytes)
    {
        for (int i = 0; i < inBytes; ++i) {
            mBytes.push_back(std::uint8_t(inValue >> (8 * i)));
        }
    }
    std::vector<std::uint8_t> Take() { return std::move(mBytes); }

private:
    std::vector<std::uint8_t> mBytes;
};

[[noreturn]] void ThrowExists(const std::string& inPath)
{
    throw kiocore::kio_exception(
        LocalText(
            "$$$/Halcyon/TrHost/Device/FileThere=@0 is there already; it is overwritten only with --force",
            {inPath}),
        kiocore::kError_BadArgument);
}

} // namespace

WaveFile::WaveFile(const std::string& inNativePath, const AudioFormat& inFormat, SampleForm inForm,
                   bool inOverwrite)
    : mPath(inNativePath), mFormat(inFormat), mForm(inForm), mOverwrite(inOverwrite)
{
    CheckPlace();
    do { // a name may have been left over by a process that had our number before us
        mTemporaryPath = kiocore::filesupport::TemporaryNameBeside(mPath);
        mFile = GetFileCalls().Open(mTemporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (mFile < 0 && (errno == EEXIST || errno == EINTR));
    if (mFile < 0) {
        const int error = errno;
        mTemporaryPath.clear();
        throw kiocore::file_exception("create", mPath, error);
    }
    const std::vector<std::uint8_t> header = Header();
    if (kiocore::filesupport::WriteAll(mFile, header.data(), header.size()) != 0) {
        const int error = errno;
        GetFileCalls().Close(mFile);
        GetFileCalls().Unlink(mTemporaryPath.c_str());
        throw kiocore::file_exception("write", mPath, error);
    }
}

WaveFile::~WaveFile()
{
    if (mFile >= 0) {
        GetFileCalls().Close(mFile);
    }
    if (!mTemporaryPath.empty()) {
        GetFileCalls().Unlink(mTemporaryPath.c_str());
    }
}

void WaveFile::CheckPlace() const
{
    struct stat status {};
    if (lstat(mPath.c_str(), &status) != 0) {
        return; // what is wrong with the folder shows when the file is made
    }
    if (!S_ISREG(status.st_mode)) {
        throw kiocore::kio_exception(LocalText("$$$/Halcyon/TrHost/Device/NotRegular=@0 is no regular file; "
                                               "expected the name of a new WAVE file",
                                               {mPath}),
                                     kiocore::kError_BadArgument);
    }
    if (!mOverwrite) {
        ThrowExists(mPath);
    }
}

std::vector<std::uint8_t> WaveFile::Header() const
{
    const bool isFloat = mForm == SampleForm::kFloat32;
    const bool isExtensible = mFormat.channels > 2;
    const int sampleBytes = BytesOf(mForm);
    const auto frameBytes = std::uint64_t(sampleBytes) * std::uint64_t(mFormat.channels);
    const auto dataBytes = std::uint64_t(mDataBytes);
    const std::uint32_t formatBytes = isExtensible ? 40 : isFloat ? 18 : 16;
    const std::uint64_t riffBytes =
        4 + 36 + 8 + formatBytes + (isFloat ? 12 : 0) + 8 + dataBytes + dataBytes % 2;
    const bool isLong = riffBytes >= kTooLong;

    Bytes bytes;
    bytes.Text(isLong ? "RF64" : "RIFF");
    bytes.Number(isLong ? kTooLong : riffBytes, 4);
    bytes.Text("WAVE");
    bytes.Text(isLong ? "ds64" : "JUNK"); // keeps the place that a file beyond 4 GB needs
    bytes.Number(28, 4);
    bytes.Number(isLong ? riffBytes : 0, 8);
    bytes.Number(isLong ? dataBytes : 0, 8);
    bytes.Number(isLong ? dataBytes / frameBytes : 0, 8);
    bytes.Number(0, 4);
    bytes.Text("fmt ");
    bytes.Number(formatBytes, 4);
    const std::uint16_t tag = isFloat ? kTag_Float : kTag_PCM;
    bytes.Number(isExtensible ? kTag_Extensible : tag, 2);
    bytes.Number(std::uint64_t(mFormat.channels), 2);
    bytes.Number(std::uint64_t(mFormat.rate), 4);
    bytes.Number(std::uint64_t(mFormat.rate) * frameBytes, 4);
    bytes.Number(frameBytes, 2);
    bytes.Number(std::uint64_t(sampleBytes) * 8, 2);
    if (isExtensible) {
        bytes.Number(22, 2);
        bytes.Number(std::uint64_t(sampleBytes) * 8, 2);
        bytes.Number(0, 4); // nobody says which speakers
        bytes.Number(tag, 2);
        for (const unsigned part :
             {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}) {
            bytes.Number(part, 1);
        }
    } else if (isFloat) {
        bytes.Number(0, 2);
    }
    if (isFloat) {
        bytes.Text("fact");
        bytes.Number(4, 4);
        bytes.Number(isLong ? kTooLong : dataBytes / frameBytes, 4);
    }
    bytes.Text("data");
    bytes.Number(isLong ? kTooLong : dataBytes, 4);
    return bytes.Take();
}

void WaveFile::Write(const float* inSamples, int inFrames)
{
    const auto count = std::size_t(inFrames) * std::size_t(mFormat.channels);
    const std::size_t before = mBuffer.size();
    mBuffer.resize(before + count * std::size_t(BytesOf(mForm)));
    FromFloat(mForm, inSamples, count, mBuffer.data() + before);
    mFrames += inFrames;
    if (mBuffer.size() >= kBufferBytes) {
        Flush();
    }
}

void WaveFile::Flush()
{
    if (mFailed) {
        mBuffer.clear();
        return;
    }
    std::size_t done = 0;
    while (done < mBuffer.size()) {
        const ssize_t written = GetFileCalls().Write(mFile, mBuffer.data() + done, mBuffer.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            const int error = written == 0 ? ENOSPC : errno;
            mFailed = true;
            const std::int64_t frameBytes = std::int64_t(BytesOf(mForm)) * mFormat.channels;
            mDataBytes = (mDataBytes + std::int64_t(done)) / frameBytes * frameBytes;
            mFrames = mDataBytes / frameBytes;
            mBuffer.clear();
            throw kiocore::file_exception("write", mPath, error);
        }
        done += std::size_t(written);
    }
    mDataBytes += std::int64_t(done);
    mBuffer.clear();
}

void WaveFile::Finish()
{
    Flush();
    const std::vector<std::uint8_t> header = Header();
    const auto end = off_t(header.size()) + off_t(mDataBytes);
    // Frames of which only a part was written go; a file of odd length gets its pad byte.
    if (ftruncate(mFile, end + off_t(mDataBytes % 2)) != 0 || lseek(mFile, 0, SEEK_SET) != 0 ||
        kiocore::filesupport::WriteAll(mFile, header.data(), header.size()) != 0 ||
        GetFileCalls().Sync(mFile) != 0) {
        throw kiocore::file_exception("complete", mPath, errno);
    }
    const int result = GetFileCalls().Close(std::exchange(mFile, -1));
    if (result != 0 && errno != EINTR) {
        throw kiocore::file_exception("close", mPath, errno);
    }
    Publish();
    mFinished = true;
}

void WaveFile::Publish()
{
    if (!mOverwrite) {
        // Unlike a rename, a link never takes the place of a file that has come meanwhile.
        if (GetFileCalls().Link(mTemporaryPath.c_str(), mPath.c_str()) == 0) {
            GetFileCalls().Unlink(mTemporaryPath.c_str());
            mTemporaryPath.clear();
            return;
        }
        if (errno == EEXIST) {
            ThrowExists(mPath);
        }
        CheckPlace(); // a file system without links
    }
    if (GetFileCalls().Rename(mTemporaryPath.c_str(), mPath.c_str()) != 0) {
        throw kiocore::file_exception("rename", mPath, errno);
    }
    mTemporaryPath.clear();
}

} // namespace trhost::devices
