// Which picture is on show, and whether it comes out as the file has it. What is expected is what the ffmpeg
// program decodes.

#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <support/KeptText.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <numeric>

using namespace mediatests;
using namespace trhost::media;
using namespace kiomediatypes;

namespace {

const std::string kFFmpeg = "ffmpeg -nostdin -v error -y ";
/// 60 pictures at 25 a second, each different from the others.
const std::string kPictures = kFFmpeg + "-f lavfi -i testsrc2=s=96x64:r=25:d=2.4 ";

std::string Pixels(const MF::IVideoFrameRef& inFrame)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    const VF::FrameLayout layout =
        VF::LayoutOf(inFrame->GetPixelFormat(), inFrame->GetWidth(), inFrame->GetHeight(), true);
    std::string pixels;
    for (int plane = 0; plane < memory->GetPlaneCount(); ++plane) {
        for (std::uint32_t y = 0; y < memory->GetRowCount(plane); ++y) {
            pixels.append(reinterpret_cast<const char*>(memory->GetPixels(plane)) +
                              y * memory->GetRowBytes(plane),
                          layout.planes[plane].usedBytes);
        }
    }
    return pixels;
}

/// The same, of 4:2:2 as planes of Y, Cb and Cr; 10-bit codes in two bytes each.
std::string Unpacked(const MF::IVideoFrameRef& inFrame)
{
    const std::string pixels = Pixels(inFrame);
    const std::size_t width = inFrame->GetWidth();
    const std::size_t rowBytes = pixels.size() / inFrame->GetHeight();
    const bool isV210 = inFrame->GetPixelFormat() == kPixelFormat_V210_422_10u;
    if (!isV210 && inFrame->GetPixelFormat() != kPixelFormat_UYVY_422_8u) {
        return pixels;
    }
    std::string planes[3];
    for (std::size_t row = 0; row < pixels.size(); row += rowBytes) {
        for (std::size_t i = 0; i < width + (width + 1) / 2 * 2; ++i) { // Cb Y Cr Y, and so on
            // An odd last pixel is followed by nothing of the picture's.
            const std::size_t plane = i % 2 == 1 ? 0 : i % 4 == 0 ? 1 : 2;
            if (isV210) {
                std::uint32_t word = 0;
                std::memcpy(&word, &pixels[row + i / 3 * 4], 4);
                const std::uint32_t code = word >> (i % 3 * 10) & 1023;
                planes[plane] += {char(code), char(code >> 8)};
            } else {
                planes[plane] += pixels[row + i];
            }
        }
    }
    return planes[0] + planes[1] + planes[2];
}

/// What ffmpeg makes of a file: all pictures, one behind the other.
std::string Decoded(const Path& inMedia, const std::string& inOptions)
{
    const Path raw = inMedia.string() + ".raw";
    RunCommand(kFFmpeg + "-i " + Quoted(inMedia) + " -fps_mode passthrough " + inOptions + " -f rawvideo " +
               Quoted(raw));
    return support::ReadFile(raw);
}

std::vector<std::string> DecodedPictures(const Path& inMedia, std::size_t inBytes)
{
    const std::string all = Decoded(inMedia, "-map 0:v -pix_fmt yuv420p");
    std::vector<std::string> pictures;
    for (std::size_t at = 0; at + inBytes <= all.size(); at += inBytes) {
        pictures.push_back(all.substr(at, inBytes));
    }
    return pictures;
}
constexpr std::size_t kPictureBytes = 96 * 64 * 3 / 2;

TickTime Frames(double inCount)
{
    return TickTime::FromSeconds(inCount / 25);
}

/// Number of the picture that comes for a time; -1 for one that is none of them.
int NumberAt(IVideoReader& ioReader, TickTime inTime, const std::vector<std::string>& inPictures)
{
    const std::string pixels = Pixels(ioReader.FrameAt(inTime, NoCancel()));
    const auto found = std::find(inPictures.begin(), inPictures.end(), pixels);
    return found == inPictures.end() ? -1 : int(found - inPictures.begin());
}

} // namespace

TEST(VideoReader, ShowsThePictureOfTheTime)
{
    const struct {
        const char* name;
        const char* file;
        std::string command; // up to the file
    } kCases[] = {
        {"B-frames in MP4", "a.mp4", kPictures + "-c:v libx264 -bf 3 -g 12"},
        {"B-frames over open groups in a transport stream", "a.ts",
         kPictures + "-c:v libx264 -x264-params open-gop=1:keyint=12:min-keyint=12:bframes=3:scenecut=0"},
        {"B-frames in a program stream", "a.mpg", kPictures + "-c:v mpeg2video -q:v 2 -bf 2 -g 12"},
        {"one key frame only", "a.mov", kPictures + "-c:v libx264 -bf 2 -g 600"},
        {"HEVC in fragments", "a.mp4",
         kPictures + "-c:v libx265 -x265-params log-level=none:keyint=10 -movflags frag_keyframe+empty_moov"},
        {"VP9 in WebM", "a.webm", kPictures + "-c:v libvpx-vp9 -cpu-used 8 -deadline realtime -g 20"},
        {"MPEG-4 in AVI", "a.avi", kPictures + "-c:v mpeg4 -q:v 2 -g 12"},
        {"key frames only", "a.mkv", kPictures + "-c:v ffv1 -pix_fmt yuv420p"},
        {"a bare stream without times", "a.h264", kPictures + "-c:v libx264 -bf 2 -g 12"},
        {"sound before the picture", "a.mkv",
         kFFmpeg + "-f lavfi -i sine=d=3 -itsoffset 0.4 -f lavfi -i testsrc2=s=96x64:r=25:d=2.4 "
                   "-c:v libx264 -g 12 -c:a pcm_s16le"},
        {"cut within a group, with an edit list", "cut.mp4",
         kPictures + "-c:v libx264 -bf 2 -g 25 whole.mp4 && " + kFFmpeg + "-ss 0.6 -i whole.mp4 -c copy"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        RunCommand("cd " + Quoted(folder.Path()) + " && " + test.command + " " + test.file);
        const Path media = folder / test.file;
        const std::vector<std::string> pictures = DecodedPictures(media, kPictureBytes);
        const int count = int(pictures.size());
        ASSERT_GE(count, 40);
        const int late = std::string(test.command).find("itsoffset") != std::string::npos ? 10 : 0;

        const auto reader = Module().OpenVideo(media.string(), -1, NoCancel());
        const auto check = [&](const char* inOrder, double inAt) {
            const int expected = std::clamp(int(inAt) - late, 0, count - 1);
            EXPECT_EQ(NumberAt(*reader, Frames(inAt), pictures), expected) << inOrder << " at frame " << inAt;
        };
        for (int i = 0; i < count; ++i) {
            check("on the start of each", i);
            check("shortly before the next", i + 0.98);
        }
        for (int i = count + late; i-- > 0;) {
            check("backwards", i + 0.5);
        }
        for (int i = 0; i < 40; ++i) {
            check("here and there", i * 37 % (count + late) + 0.25);
        }
        check("at the end", count + late);
        check("far beyond", 1e6);
        check("once more inside", late + 20);
        EXPECT_EQ(NumberAt(*reader, TickTime::FromSeconds(-5), pictures), 0) << "before the start";
        EXPECT_EQ(NumberAt(*reader, TickTime(), pictures), 0) << "at no time at all";

        for (const double at : {late + 30.0, 1e6, 0.0}) {
            const auto fresh = Module().OpenVideo(media.string(), -1, NoCancel());
            EXPECT_EQ(NumberAt(*fresh, Frames(at), pictures), std::clamp(int(at) - late, 0, count - 1))
                << "as the first request, at frame " << at;
        }
    }
}

TEST(VideoReader, ReadsNoMoreThanItMust)
{
    // It asks whether it is cancelled about twice for each packet, so questions tell how much was read.
    const struct {
        const char* name;
        const char* file;
        const char* options;
        int most; // packets that one picture in the middle may take: its group, and the ways to find it
    } kCases[] = {
        {"with an index", "a.mp4", "-c:v libx264 -bf 2 -g 50", 80},
        {"with key frames in the index only", "a.mkv", "-c:v libx264 -bf 2 -g 50", 80},
        {"without index", "a.ts", "-c:v libx264 -x264-params open-gop=1:keyint=50:bframes=3", 220},
        {"without index, HEVC", "b.ts", "-c:v libx265 -x265-params log-level=none:open-gop=1:keyint=50", 220},
    };
    constexpr int kCount = 1000;
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        const Path media = folder / test.file;
        RunCommand(kFFmpeg + "-f lavfi -i testsrc2=s=96x64:r=25:d=40 -preset ultrafast " + test.options +
                   " " + Quoted(media));
        const std::vector<std::string> pictures = DecodedPictures(media, kPictureBytes);
        ASSERT_EQ(pictures.size(), std::size_t(kCount));
        const auto open = [&] { return Module().OpenVideo(media.string(), -1, NoCancel()); };
        const CancelAt all(1'000'000);
        const auto sequential = open();
        for (int i = 0; i < kCount; i += 10) {
            EXPECT_TRUE(Pixels(sequential->FrameAt(Frames(i + 0.5), all)) == pictures[std::size_t(i)]) << i;
        }
        const long perPacket = std::max(1L, all.Asked() / kCount);
        EXPECT_LE(all.Asked(), 6 * kCount) << "going forward reads nothing twice";
        // There and back.
        const auto jumping = open();
        for (const int i : {700, 640, 100, 549, 351, 900}) {
            const CancelAt one(1'000'000);
            EXPECT_TRUE(Pixels(jumping->FrameAt(Frames(i + 0.5), one)) == pictures[std::size_t(i)]) << i;
            EXPECT_LE(one.Asked(), perPacket * test.most) << i;
        }
    }
}

TEST(VideoReader, FrameCountsMeetTheirPicturesHoweverCoarseTheClock)
{
    const struct {
        const char* name;
        const char* file;
        const char* rate;
        Rate counted;
    } kCases[] = {
        {"milliseconds at 30", "a.mkv", "30", {30, 1}},
        {"milliseconds at 59.94", "a.mkv", "60000/1001", {60000, 1001}},
        {"90 kHz at 23.976", "a.ts", "24000/1001", {24000, 1001}},
        {"exactly, at 29.97", "a.mp4", "30000/1001", {30000, 1001}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        RunCommand(kFFmpeg + "-f lavfi -i testsrc2=s=96x64:d=2:r=" + test.rate + " -c:v libx264 -g 15 " +
                   Quoted(folder / test.file));
        const std::vector<std::string> pictures = DecodedPictures(folder / test.file, kPictureBytes);
        const auto reader = Module().OpenVideo((folder / test.file).string(), -1, NoCancel());
        for (int i = 0; i < int(pictures.size()); ++i) {
            EXPECT_EQ(NumberAt(*reader, TickTime::FromCount(i, test.counted), pictures), i);
        }
    }
}

TEST(VideoReader, PicturesStayForAsLongAsTheFileSays)
{
    // Picture n starts at frame n * (n + 1) / 2.
    const support::TemporaryFolder folder;
    for (const char* file : {"a.mp4", "a.mkv"}) {
        SCOPED_TRACE(file);
        RunCommand(kFFmpeg + "-f lavfi -i testsrc2=s=96x64:r=25:d=0.6 -vf 'setpts=N*(N+1)/2/25/TB' " +
                   "-fps_mode passthrough -c:v libx264 -bf 2 -g 5 " + Quoted(folder / file));
        const std::vector<std::string> pictures = DecodedPictures(folder / file, kPictureBytes);
        ASSERT_EQ(pictures.size(), 15u);
        const auto reader = Module().OpenVideo((folder / file).string(), -1, NoCancel());
        for (const int step : {1, 41, 104}) { // each frame once: in order, and jumping
            for (int i = 0; i < 105; ++i) {
                const int frame = i * step % 105;
                int expected = 0;
                while ((expected + 1) * (expected + 2) / 2 <= frame && expected < 14) {
                    ++expected;
                }
                EXPECT_EQ(NumberAt(*reader, Frames(frame + 0.1), pictures), expected) << frame;
            }
        }
    }
}

TEST(VideoReader, KeepsEveryFormatsPixels)
{
    const struct {
        const char* name;
        PixelFormat expected;
        const char* compared; // ffmpeg's options for the same bytes
        int step = 0;         // how much 16-bit values may differ
        std::vector<std::string> sizes = {"47:31"};
        std::size_t border = 0; // where filters go on differently
    } kCases[] = {
        {"yuv420p", kPixelFormat_YUV_420_8u_Planar, "-pix_fmt yuv420p", 0, {"47:31", "66:38", "1:1"}},
        {"nv12", kPixelFormat_YUV_420_8u_Planar, "-pix_fmt yuv420p"},
        {"nv21", kPixelFormat_YUV_420_8u_Planar, "-pix_fmt yuv420p"},
        {"yuv422p", kPixelFormat_UYVY_422_8u, "-pix_fmt yuv422p", 0, {"47:31", "66:38", "1:1"}},
        {"yuyv422", kPixelFormat_UYVY_422_8u, "-pix_fmt yuv422p"},
        {"uyvy422", kPixelFormat_UYVY_422_8u, "-pix_fmt yuv422p"},
        {"yuv422p10le", kPixelFormat_V210_422_10u, "-pix_fmt yuv422p10le", 0, {"47:31", "66:38", "1:1"}},
        {"rgb24", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"bgr24", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"bgra", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"rgba", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"argb", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"abgr", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"0rgb", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"gbrp", kPixelFormat_BGRA_4444_8u, "-pix_fmt bgra"},
        {"rgb565le", kPixelFormat_BGRA_4444_16u, "-vf format=bgra -pix_fmt bgra64le", 300},
        {"rgba64le", kPixelFormat_BGRA_4444_16u, "-vf format=gbrap16le -pix_fmt bgra64le"},
        {"gbrp12le", kPixelFormat_BGRA_4444_16u, "-vf zscale,format=gbrp16le -pix_fmt bgra64le", 1},
        {"yuv444p10le", kPixelFormat_BGRA_4444_16u,
         "-vf zscale=min=170m:rin=limited:m=gbr:r=full,format=gbrp16le -pix_fmt bgra64le", 1},
        {"yuv420p10le",
         kPixelFormat_BGRA_4444_16u,
         "-vf zscale=min=170m:rin=limited:cin=left:m=gbr:r=full:f=bicubic,format=gbrp16le -pix_fmt bgra64le",
         1,
         {"68:36"},
         4},
        {"yuv411p",
         kPixelFormat_BGRA_4444_16u,
         "-vf zscale=min=170m:rin=limited:cin=left:m=gbr:r=full:f=bicubic,format=gbrp16le -pix_fmt bgra64le",
         1,
         {"68:36"},
         4},
        {"gray12le", kPixelFormat_BGRA_4444_16u, "-vf format=gbrp16le -pix_fmt bgra64le", 40},
        {"monow", kPixelFormat_BGRA_4444_16u, "-vf format=bgra -pix_fmt bgra64le", 300},
        {"yuv444p", kPixelFormat_BGRA_4444_16u,
         "-vf zscale=min=170m:rin=limited:m=gbr:r=full,format=gbrp16le -pix_fmt bgra64le", 1},
    };
    for (const auto& test : kCases) {
        for (const std::string& size : test.sizes) {
            SCOPED_TRACE(std::string(test.name) + " of " + size);
            const support::TemporaryFolder folder;
            const Path media = folder / "a.nut";
            RunCommand(kFFmpeg + "-f lavfi -i testsrc2=s=96x64:r=25:d=0.04,format=rgba,crop=" + size +
                       ":3:5 -pix_fmt " + test.name + " -c:v rawvideo " + Quoted(media));
            const auto frame = Module().OpenVideo(media.string(), 0, NoCancel())->FrameAt({}, NoCancel());
            ASSERT_EQ(NameOf(frame->GetPixelFormat()), NameOf(test.expected));
            const std::string expected = Decoded(media, test.compared);
            const std::string found = Unpacked(frame);
            if (test.step == 0) {
                EXPECT_TRUE(found == expected);
                continue;
            }
            ASSERT_EQ(found.size(), expected.size());
            int most = 0;
            const std::size_t width = frame->GetWidth();
            for (std::size_t i = 0; i < found.size(); i += 2) {
                const std::size_t x = i / 8 % width;
                const std::size_t y = i / 8 / width;
                if (std::min({x, width - 1 - x, y, frame->GetHeight() - 1 - y}) < test.border) {
                    continue;
                }
                std::uint16_t a = 0;
                std::uint16_t b = 0;
                std::memcpy(&a, &found[i], 2);
                std::memcpy(&b, &expected[i], 2);
                most = std::max(most, std::abs(a - b));
            }
            EXPECT_LE(most, test.step);
        }
    }
}

TEST(VideoReader, TellsWhatTheNumbersMean)
{
    using namespace kiomediatypes::color;
    const auto bt709Full = [] {
        ColorSpace space = GetDefaultColorSpace();
        space.range = Range::kFull;
        return space;
    }();
    const ColorSpace hdr{Primaries::kBT2020, Transfer::kPQ, Matrix::kBT2020_NCL, Range::kLimited};
    const struct {
        const char* name;
        const char* sizeAndOptions;
        ColorSpace expected;
        PixelAspectRatio shape = kPixelAspectRatio_Square;
    } kCases[] = {
        {"480 rows, nothing said", "64x480", kColorSpace_BT601_525},
        {"576 rows, nothing said", "64x576", kColorSpace_BT601_625},
        {"577 rows and more", "64x578", GetDefaultColorSpace()},
        {"the matrix alone", "64x480 -colorspace bt709", GetDefaultColorSpace()},
        {"full range", "64x720 -color_range pc", bt709Full},
        {"all said", "64x480 -colorspace bt2020nc -color_primaries bt2020 -color_trc smpte2084", hdr},
        {"wide pixels", "64x576 -aspect 1:6", kColorSpace_BT601_625, {3, 2}},
    };
    const support::TemporaryFolder folder;
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        RunCommand(kFFmpeg + "-f lavfi -i testsrc2=r=25:d=0.04:s=" + test.sizeAndOptions +
                   " -pix_fmt yuv420p -c:v libx264 " + Quoted(folder / "a.mkv"));
        const auto frame =
            Module().OpenVideo((folder / "a.mkv").string(), -1, NoCancel())->FrameAt({}, NoCancel());
        const ColorSpace found = frame->GetColorSpace();
        EXPECT_EQ(int(found.matrix), int(test.expected.matrix));
        EXPECT_EQ(int(found.primaries), int(test.expected.primaries));
        EXPECT_EQ(int(found.transfer), int(test.expected.transfer));
        EXPECT_EQ(int(found.range), int(test.expected.range));
        const PixelAspectRatio shape = frame->GetPixelAspectRatio();
        EXPECT_EQ(double(shape.numerator) / shape.denominator,
                  double(test.shape.numerator) / test.shape.denominator);
    }
}

TEST(VideoReader, TurnsPicturesUpright)
{
    const support::TemporaryFolder folder;
    RunCommand(kFFmpeg + "-f lavfi -i testsrc2=s=46x30:r=25:d=0.04 -c:v qtrle " + Quoted(folder / "rgb.mov"));
    // Chroma rises evenly in both directions, so what it must be anywhere is known.
    RunCommand(kFFmpeg +
               "-f lavfi -i color=s=46x30:r=25:d=0.04,format=yuv420p,"
               "geq=lum='X+4*Y':cb='40+4*X+Y':cr='200-X-4*Y' -c:v libx264 -qp 0 " +
               Quoted(folder / "yuv.mov"));
    for (const int degrees : {0, 90, 180, 270}) {
        SCOPED_TRACE(degrees);
        const auto turned = [&](const char* inFile) {
            const Path path = folder / ("turned-" + std::to_string(degrees) + inFile);
            RunCommand(kFFmpeg + "-i " + Quoted(folder / inFile) +
                       " -c copy -metadata:s:v rotate=" + std::to_string(degrees) + " " + Quoted(path));
            return path;
        };
        const Path rgb = turned("rgb.mov");
        const auto frame = Module().OpenVideo(rgb.string(), -1, NoCancel())->FrameAt({}, NoCancel());
        EXPECT_EQ(frame->GetWidth(), degrees % 180 == 0 ? 46u : 30u);
        EXPECT_TRUE(Pixels(frame) == Decoded(rgb, "-pix_fmt bgra"));

        const Path yuv = turned("yuv.mov");
        const auto picture = Module().OpenVideo(yuv.string(), -1, NoCancel())->FrameAt({}, NoCancel());
        const std::string found = Pixels(picture);
        const auto width = std::size_t(picture->GetWidth());
        const std::size_t luma = width * picture->GetHeight();
        EXPECT_EQ(found.substr(0, luma), Decoded(yuv, "-pix_fmt yuv420p").substr(0, luma));
        // Away from the border, where there is nothing to interpolate with.
        for (std::size_t y = 1; y + 1 < picture->GetHeight() / 2; ++y) {
            for (std::size_t x = 1; x + 1 < width / 2; ++x) {
                // Where the sample lies in the stored picture, in luma samples.
                const double atX = double(2 * x);
                const double atY = double(2 * y) + 0.5;
                const double fromX = degrees == 0     ? atX
                                     : degrees == 90  ? 45 - atY
                                     : degrees == 180 ? 45 - atX
                                                      : atY;
                const double fromY = degrees == 0     ? atY
                                     : degrees == 90  ? atX
                                     : degrees == 180 ? 29 - atY
                                                      : 29 - atX;
                const double blue = 40 + 4 * fromX / 2 + (fromY - 0.5) / 2;
                const auto sample = static_cast<unsigned char>(found[luma + y * width / 2 + x]);
                ASSERT_NEAR(sample, blue, 0.76) << x << ", " << y;
            }
        }
    }
}

TEST(VideoReader, DamageCostsOnlyWhatItHit)
{
    const struct {
        const char* name;
        const char* file;
        const char* options;
        double damageFrom; // of the file's bytes
        double damageTo;   // 1 cuts the rest off
        int soundBefore;   // pictures that must be whole
        int soundFrom;
    } kCases[] = {
        {"bytes overwritten in a transport stream", "a.ts", "-c:v libx264 -g 10", 0.45, 0.5, 18, 50},
        {"bytes overwritten in MP4", "a.mp4", "-c:v libx264 -g 10 -movflags faststart", 0.45, 0.5, 18, 50},
        {"cut short", "a.mp4", "-c:v mpeg4 -g 10 -movflags faststart", 0.6, 1, 25, 60},
        {"cut short, Matroska", "a.mkv", "-c:v libx264 -g 10", 0.6, 1, 20, 60},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        const Path whole = folder / test.file;
        RunCommand(kPictures + test.options + " " + Quoted(whole));
        const std::vector<std::string> pictures = DecodedPictures(whole, kPictureBytes);
        std::string bytes = support::ReadFile(whole);
        const auto from = std::size_t(test.damageFrom * double(bytes.size()));
        if (test.damageTo >= 1) {
            bytes.resize(from);
        } else {
            for (std::size_t i = from; i < std::size_t(test.damageTo * double(bytes.size())); ++i) {
                bytes[i] = char(i * 167);
            }
        }
        support::WriteFile(whole, bytes);
        const auto reader = Module().OpenVideo(whole.string(), -1, NoCancel());
        const auto visit = [&](int inFrame) {
            const auto frame = reader->FrameAt(Frames(inFrame + 0.5), NoCancel());
            ASSERT_EQ(frame->GetWidth(), 96u);
            if (inFrame < test.soundBefore || inFrame >= test.soundFrom) {
                EXPECT_TRUE(Pixels(frame) == pictures[std::size_t(inFrame)]) << inFrame;
            }
        };
        for (int i = 0; i < 60; ++i) {
            visit(i);
        }
        for (int i = 60; i-- > 0;) {
            visit(i);
        }
    }
}

TEST(VideoReader, SaysWhatItCannotShow)
{
    const support::TemporaryFolder folder;
    RunCommand(kPictures + "-f lavfi -i sine=d=1 -c:v mpeg4 -c:a aac " + Quoted(folder / "movie.mp4"));
    RunCommand(kFFmpeg + "-f lavfi -i sine=d=1 " + Quoted(folder / "sound.wav"));
    support::WriteFile(folder / "text.mp4", std::string(5000, 'x'));
    // A header that promises pictures, and none behind it.
    std::string bytes = support::ReadFile(folder / "movie.mp4");
    const std::size_t data = bytes.find("mdat");
    const std::size_t index = bytes.find("moov");
    ASSERT_LT(data, index);
    std::fill(bytes.begin() + std::ptrdiff_t(data) + 4, bytes.begin() + std::ptrdiff_t(index) - 4, '\0');
    support::WriteFile(folder / "empty.mp4", bytes);
    const struct {
        const char* name;
        const char* file;
        int stream;
        std::uint32_t code;
        const char* text;
    } kCases[] = {
        {"no such file", "none.mp4", -1, kiocore::kError_File, "No such file"},
        {"no media", "text.mp4", -1, kMediaError_NotMedia, "expected a media file"},
        {"sound only", "sound.wav", -1, kMediaError_NotMedia, "no video stream"},
        {"a stream of sound", "movie.mp4", 1, kMediaError_NotMedia, "stream 1 is no video stream"},
        {"no such stream", "movie.mp4", 7, kMediaError_NotMedia, "stream 7"},
        {"nothing in it", "empty.mp4", -1, kMediaError_NothingDecoded, "no picture"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            Module()
                .OpenVideo((folder / test.file).string(), test.stream, NoCancel())
                ->FrameAt(TickTime::Zero(), NoCancel());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const kiocore::kio_exception& error) {
            EXPECT_EQ(error.Code(), test.code);
            EXPECT_THAT(trhost::ToldText(error.what()), testing::HasSubstr(test.text));
            EXPECT_THAT(trhost::ToldText(error.what()), testing::HasSubstr(test.file));
        }
    }
}

TEST(VideoReader, ACancelledRequestLeavesItUsable)
{
    const support::TemporaryFolder folder;
    RunCommand(kPictures + "-c:v libx264 -g 12 " + Quoted(folder / "a.mkv"));
    const std::vector<std::string> pictures = DecodedPictures(folder / "a.mkv", kPictureBytes);
    const auto reader = Module().OpenVideo((folder / "a.mkv").string(), -1, NoCancel());
    bool finished = false;
    for (long question = 1; !finished; question += 7) {
        const int wanted = 20 + int(question % 30);
        try {
            const auto frame = reader->FrameAt(Frames(wanted + 0.5), CancelAt(question));
            finished = true;
            EXPECT_TRUE(Pixels(frame) == pictures[std::size_t(wanted)]);
        } catch (const kiocore::kio_exception& error) {
            EXPECT_EQ(error.Code(), kiocore::kError_Cancelled);
            EXPECT_EQ(NumberAt(*reader, Frames(5.5), pictures), 5);
        }
    }
    EXPECT_THROW(Module().OpenVideo((folder / "a.mkv").string(), -1, CancelAt(1)), kiocore::kio_exception);
}
