#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/PlatformByteStream.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kiocore::filesupport {
namespace {

using support::ReadFile;
using support::TemporaryFolder;
using support::WriteFile;

std::string Pattern(std::size_t inSize)
{
    std::string bytes(inSize, '\0');
    for (std::size_t i = 0; i < inSize; ++i) {
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    }
    return bytes;
}

TEST(IPlatformByteStream, ReadsBlockByBlockWhateverTheSystemCutsShort)
{
    TemporaryFolder folder;
    const std::string bytes = Pattern(3 * 1024 * 1024 + 17);
    const utility::UTF16String path = WriteFile(folder / "big", bytes);
    for (const std::size_t most : {0u, 4097u}) {
        support::FaultyFileCalls calls;
        calls.ReadAtMost(most);
        calls.FailCall(2, EINTR); // after Open and the first Read
        IPlatformByteStream stream(path);
        ASSERT_EQ(stream.Size(), bytes.size());
        std::string read(bytes.size() + 10, '\0');
        EXPECT_EQ(stream.ReadBlock(read.data(), 0), 0u);
        EXPECT_EQ(stream.ReadBlock(read.data(), 100000), 100000u);
        EXPECT_EQ(stream.Size(), bytes.size()) << "of the whole file, wherever the reading has got to";
        EXPECT_EQ(stream.ReadBlock(read.data() + 100000, read.size()), bytes.size() - 100000);
        EXPECT_EQ(stream.ReadBlock(read.data() + bytes.size(), 10), 0u);
        EXPECT_TRUE(read.compare(0, bytes.size(), bytes) == 0) << "read at most " << most << " bytes at once";
    }
}

TEST(IPlatformByteStream, ReadsOnFromAPosition)
{
    const TemporaryFolder folder;
    IPlatformByteStream stream(WriteFile(folder / "file", "0123456789"));
    const auto read = [&stream](std::uint64_t inPosition) {
        stream.SetPosition(inPosition);
        char bytes[4];
        return std::string(bytes, stream.ReadBlock(bytes, sizeof(bytes)));
    };
    EXPECT_EQ(read(5), "5678");
    EXPECT_EQ(read(0), "0123");
    EXPECT_EQ(read(8), "89");
    EXPECT_EQ(read(1000), "");
}

TEST(IPlatformByteStream, RefusesWhatIsNoFileAndTellsOfFailures)
{
    TemporaryFolder folder;
    const utility::UTF16String path = WriteFile(folder / "file", "12345");
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* name;
        int error;
    } kCases[] = {{"missing", ENOENT}, {"folder", EISDIR}, {"pipe", EINVAL}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            IPlatformByteStream stream(folder.UTF16(test.name));
            ADD_FAILURE() << "opened";
        } catch (const file_exception& exception) {
            EXPECT_EQ(exception.Errno(), test.error) << exception.what();
        }
    }
    support::FaultyFileCalls calls;
    calls.FailCalls("Read", EIO);
    IPlatformByteStream stream(path);
    char byte = 0;
    EXPECT_THROW(stream.ReadBlock(&byte, 1), file_exception);
}

TEST(OPlatformByteStream, MakesAFileForItsOwnerOnly)
{
    TemporaryFolder folder;
    const std::string bytes = Pattern(2 * 1024 * 1024 + 3);
    const auto path = folder / "new";
    const int nextHandle = ::open("/dev/null", O_RDONLY); // the lowest free one, and so the stream's
    ::close(nextHandle);
    {
        OPlatformByteStream stream(path.c_str());
        ASSERT_TRUE(stream.IsOpen());
        EXPECT_EQ(::fcntl(nextHandle, F_GETFD), FD_CLOEXEC);
        EXPECT_TRUE(stream.WriteBlock(bytes.data(), 0));
        EXPECT_TRUE(stream.WriteBlock(bytes.data(), 1000));
        EXPECT_TRUE(stream.WriteBlock(bytes.data() + 1000, bytes.size() - 1000));
        EXPECT_EQ(stream.Errno(), 0);
    }
    EXPECT_TRUE(ReadFile(path) == bytes);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST(OPlatformByteStream, LeavesAloneWhatIsThere)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "older");
    std::filesystem::create_directory(folder / "folder");
    std::filesystem::create_symlink(folder / "target", folder / "dangling");
    const struct {
        const char* name;
        int error;
    } kCases[] = {{"file", EEXIST}, {"folder", EEXIST}, {"dangling", EEXIST}, {"missing/new", ENOENT}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        OPlatformByteStream stream((folder / test.name).c_str());
        EXPECT_FALSE(stream.IsOpen());
        EXPECT_EQ(stream.Errno(), test.error);
        EXPECT_FALSE(stream.WriteBlock("x", 1));
    }
    EXPECT_EQ(ReadFile(folder / "file"), "older");
    EXPECT_FALSE(std::filesystem::exists(folder / "target"));
}

TEST(OPlatformByteStream, OneOfManyAtOnceMakesTheFile)
{
    for (int round = 0; round < 50; ++round) {
        TemporaryFolder folder;
        const std::string path = folder / "new";
        std::atomic<int> waiting{4};
        std::atomic<int> opened{0};
        std::vector<std::thread> threads;
        for (char name : {'a', 'b', 'c', 'd'}) {
            threads.emplace_back([&, name] {
                --waiting;
                while (waiting > 0) {
                    std::this_thread::yield();
                }
                OPlatformByteStream stream(path.c_str());
                opened += stream.IsOpen();
                stream.WriteBlock(&name, 1);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(opened, 1);
        EXPECT_EQ(ReadFile(path).size(), 1u);
    }
}

TEST(OPlatformByteStream, TellsWhenNotAllCouldBeWritten)
{
    TemporaryFolder folder;
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{60, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    auto stream = std::make_unique<OPlatformByteStream>((folder / "new").c_str());
    const bool written = stream->WriteBlock(Pattern(100).data(), 100); // the system takes 60, then none
    const int error = stream->Errno();
    stream.reset();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(error, EFBIG);
    EXPECT_EQ(ReadFile(folder / "new"), Pattern(60));
}

} // namespace
} // namespace kiocore::filesupport
