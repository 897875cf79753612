#include "Pictures.h"

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <new>
#include <random>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

using namespace kiomediatypes;

struct Canvas {
    MF::IVideoFrameRef frame;
    std::byte* pixels;
    std::size_t rowBytes;
    std::uint32_t width;
    std::uint32_t height;

    std::uint8_t* At(std::uint32_t inX, std::uint32_t inY) const
    {
        return reinterpret_cast<std::uint8_t*>(pixels) + inY * rowBytes + std::size_t{inX} * 4;
    }
};

Canvas MakeCanvas(std::uint32_t inWidth, std::uint32_t inHeight)
{
    Canvas canvas{{}, nullptr, 0, inWidth, inHeight};
    if (!VF::CreateVideoFrame(canvas.frame, kPixelFormat_BGRA_4444_8u, inWidth, inHeight,
                              kPixelAspectRatio_Square, false, false) ||
        !canvas.frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = canvas.frame;
    canvas.pixels = memory->GetWritablePixels();
    canvas.rowBytes = memory->GetRowBytes();
    return canvas;
}

std::uint32_t Hash(std::uint32_t inA, std::uint32_t inB, std::uint32_t inSeed)
{
    std::uint32_t hash = inA * 0x9E3779B1u ^ inB * 0x85EBCA77u ^ inSeed * 0xC2B2AE3Du;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    hash = (hash ^ hash >> 12) * 0x297A2D39u;
    return hash ^ hash >> 15;
}

/// Values of a coarse lattice, interpolated: 0 to 1.
float Noise(float inX, float inY, std::uint32_t inSeed)
{
    const auto x = static_cast<std::uint32_t>(inX);
    const auto y = static_cast<std::uint32_t>(inY);
    const float fx = inX - static_cast<float>(x);
    const float fy = inY - static_cast<float>(y);
    const auto corner = [&](std::uint32_t inDX, std::uint32_t inDY) {
        return static_cast<float>(Hash(x + inDX, y + inDY, inSeed) & 0xFFFF) / 65535.0f;
    };
    const float above = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * fx;
    const float below = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * fx;
    return above + (below - above) * fy;
}

void PaintPhoto(const Canvas& inCanvas)
{
    const float scale = 1920.0f / static_cast<float>(inCanvas.width);
    for (std::uint32_t y = 0; y < inCanvas.height; ++y) {
        for (std::uint32_t x = 0; x < inCanvas.width; ++x) {
            const float u = static_cast<float>(x) * scale;
            const float v = static_cast<float>(y) * scale;
            const float light = 0.55f * Noise(u / 400, v / 400, 1) + 0.3f * Noise(u / 60, v / 60, 2) +
                                0.15f * Noise(u / 9, v / 9, 3);
            const float warmth = Noise(u / 250, v / 250, 4) - 0.5f;
            std::uint8_t* const pixel = inCanvas.At(x, y);
            const std::uint32_t grain = Hash(x, y, 5);
            for (int channel = 0; channel < 3; ++channel) {
                const float tint = 1.0f + warmth * (0.35f * static_cast<float>(channel - 1));
                const int noise = static_cast<int>(grain >> (8 * channel) & 3) - 1;
                pixel[channel] = static_cast<std::uint8_t>(
                    std::clamp(static_cast<int>(light * tint * 230.0f) + noise, 0, 255));
            }
            pixel[3] = 255;
        }
    }
}

void Fill(const Canvas& inCanvas, std::uint32_t inLeft, std::uint32_t inTop, std::uint32_t inRight,
          std::uint32_t inBottom, std::uint32_t inColor)
{
    for (std::uint32_t y = inTop; y < std::min(inBottom, inCanvas.height); ++y) {
        for (std::uint32_t x = inLeft; x < std::min(inRight, inCanvas.width); ++x) {
            const std::array<std::uint8_t, 4> bytes = {static_cast<std::uint8_t>(inColor),
                                                       static_cast<std::uint8_t>(inColor >> 8),
                                                       static_cast<std::uint8_t>(inColor >> 16), 255};
            std::memcpy(inCanvas.At(x, y), bytes.data(), 4);
        }
    }
}

/// Letters of 5 by 7 dots, each of a shape of its own.
void PaintText(const Canvas& inCanvas, std::uint32_t inLeft, std::uint32_t inTop, std::uint32_t inLetters,
               std::uint32_t inSeed, std::uint32_t inColor)
{
    for (std::uint32_t letter = 0; letter < inLetters; ++letter) {
        const std::uint32_t shape = Hash(letter, inSeed, 6) % 40;
        for (std::uint32_t dot = 0; dot < 35; ++dot) {
            if ((Hash(shape, dot, 7) & 1) != 0) {
                const std::uint32_t x = inLeft + letter * 7 + dot % 5;
                const std::uint32_t y = inTop + dot / 5;
                Fill(inCanvas, x, y, x + 1, y + 1, inColor);
            }
        }
    }
}

void PaintInterface(const Canvas& inCanvas)
{
    Fill(inCanvas, 0, 0, inCanvas.width, inCanvas.height, 0x232323);
    for (std::uint32_t panel = 0; panel < 60; ++panel) {
        const std::uint32_t left = Hash(panel, 1, 8) % inCanvas.width;
        const std::uint32_t top = Hash(panel, 2, 8) % inCanvas.height;
        const std::uint32_t width = 60 + Hash(panel, 3, 8) % (inCanvas.width / 4 + 1);
        const std::uint32_t height = 30 + Hash(panel, 4, 8) % (inCanvas.height / 4 + 1);
        const std::uint32_t grey = 0x1C + Hash(panel, 5, 8) % 0x30;
        Fill(inCanvas, left, top, left + width, top + height, 0x0A0A0A);
        Fill(inCanvas, left + 1, top + 1, left + width - 1, top + height - 1, grey * 0x010101);
        for (std::uint32_t line = 0; line + 14 < height; line += 14) {
            PaintText(inCanvas, left + 6, top + 4 + line, std::min(40u, width / 7 - 2), panel * 100 + line,
                      line % 42 == 0 ? 0xE0A030 : 0xC8C8C8);
        }
    }
}

} // namespace

MF::IVideoFrameRef MakePicture(Look inLook, std::uint32_t inWidth, std::uint32_t inHeight)
{
    const Canvas canvas = MakeCanvas(inWidth, inHeight);
    switch (inLook) {
    case Look::kPhoto:
        PaintPhoto(canvas);
        break;
    case Look::kInterface:
        PaintInterface(canvas);
        break;
    }
    return canvas.frame;
}

MF::IVideoFrameRef WithChangedPixels(const MF::IVideoFrameRef& inPicture, double inPart)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> source = inPicture;
    const Canvas canvas = MakeCanvas(inPicture->GetWidth(), inPicture->GetHeight());
    for (std::uint32_t y = 0; y < canvas.height; ++y) {
        std::memcpy(canvas.pixels + y * canvas.rowBytes, source->GetPixels() + y * source->GetRowBytes(),
                    std::size_t{canvas.width} * 4);
    }
    std::mt19937 random(9);
    const auto count =
        static_cast<std::uint64_t>(std::llround(double(canvas.width) * canvas.height * inPart));
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint8_t* const pixel = canvas.At(static_cast<std::uint32_t>(random()) % canvas.width,
                                              static_cast<std::uint32_t>(random()) % canvas.height);
        pixel[random() % 3] ^= static_cast<std::uint8_t>(1 + random() % 255);
    }
    return canvas.frame;
}

void WritePNGFile(const MF::IVideoFrameRef& inPicture, const std::string& inPath)
{
    const auto png = VF::CompressPNG(inPicture, 6);
    std::ofstream file(inPath, std::ios::binary);
    file.write(reinterpret_cast<const char*>(png.bytes.get()), static_cast<std::streamsize>(png.size));
    if (!png || !file.flush()) {
        throw std::runtime_error("cannot write " + inPath);
    }
}

} // namespace bench
