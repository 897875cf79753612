#include "FastPNG.h"

#include "CompressedBytes.h"
#include "Inflater.h"
#include "rows/FilteredRows.h"

#include <isa-l/igzip_lib.h>

#include <cstring>
#include <memory>
#include <new>

namespace VF {
namespace {

/// Decompressed bytes: those that may still be referred to, then rows that are not complete.
class Window {
public:
    explicit Window(std::size_t inRowSize)
        : mSize(InflateBuffers::kHistory + std::max(inRowSize, kRoom)),
          mBytes(new (std::nothrow) std::uint8_t[mSize + InflateBuffers::kOutputPadding])
    {}

    bool HasMemory() const { return mBytes != nullptr; }
    std::uint8_t* Begin() const { return mBytes.get(); }
    std::uint8_t* End() const { return mBytes.get() + mSize; }
    /// Makes room behind ioEnd by dropping what is needed no more.
    /// @param ioRow  where the first row starts that is not complete.
    void Slide(std::uint8_t*& ioRow, std::uint8_t*& ioEnd)
    {
        const auto used = static_cast<std::size_t>(ioEnd - Begin());
        const std::size_t history = std::min(used, InflateBuffers::kHistory);
        const std::size_t dropped = std::min(used - history, static_cast<std::size_t>(ioRow - Begin()));
        std::memmove(Begin(), Begin() + dropped, used - dropped);
        ioRow -= dropped;
        ioEnd -= dropped;
    }

private:
    // Little enough to stay in the processor's cache, much enough that moving the rest is nothing.
    static constexpr std::size_t kRoom = 160 * 1024;
    static_assert(kFilteredSlackBytes <= InflateBuffers::kOutputPadding);

    const std::size_t mSize;
    std::unique_ptr<std::uint8_t[]> mBytes;
};

class FastDecoder {
public:
    FastDecoder(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                std::size_t inRowBytes)
        : mHeader(inHeader), mForm(FilteredFormOf(inHeader.colorType, inHeader.bitDepth)),
          mFilteredSize(1 + std::size_t{inHeader.width} * mForm.sourceBytes), mPixels(outPixels),
          mRowBytes(inRowBytes),
          mInput(inSource, inHeader, InflateBuffers::kInputReserve + 16, InflateBuffers::kInputPadding),
          mWindow(mFilteredSize), mInflater(new (std::nothrow) Inflater),
          mBlackRow(new (std::nothrow) std::byte[inRowBytes]())
    {}

    bool Decode()
    {
        if (!mInput.HasMemory() || !mWindow.HasMemory() || !mInflater || !mBlackRow ||
            !mInput.Fill(mInput.End())) {
            return false;
        }
        mRow = mWindow.Begin();
        UseInput(mInput.Begin());
        mBuffers.outputBegin = mWindow.Begin();
        mBuffers.output = mWindow.Begin();
        mBuffers.outputEnd = mWindow.End();
        for (;;) {
            std::uint8_t* const before = mBuffers.output;
            const Inflater::Status status = mInflater->Run(mBuffers);
            if (status == Inflater::Status::kDamaged || !AcceptOutput(before)) {
                return false;
            }
            switch (status) {
            case Inflater::Status::kNeedsInput:
                if (!mInput.Fill(mBuffers.input)) {
                    return false;
                }
                UseInput(mInput.Begin());
                break;
            case Inflater::Status::kNeedsRoom:
                mWindow.Slide(mRow, mBuffers.output);
                break;
            case Inflater::Status::kDone:
                return mY == mHeader.height && mRow == mBuffers.output &&
                       mAdler == mInflater->WantedAdler() && mInput.Finish(mBuffers.input);
            case Inflater::Status::kDamaged:
                return false;
            }
        }
    }

private:
    void UseInput(const std::uint8_t* inNext)
    {
        mBuffers.input = inNext;
        mBuffers.inputEnd = mInput.End();
        mBuffers.inputIsAll = mInput.IsAll();
    }

    /// Sums up what is new and makes pixels of complete rows.
    /// @return false when there is more than fits the picture, or an unknown filter.
    bool AcceptOutput(const std::uint8_t* inNew)
    {
        std::uint8_t* const end = mBuffers.output;
        mAdler = isal_adler32(mAdler, inNew, static_cast<std::uint64_t>(end - inNew));
        for (; static_cast<std::size_t>(end - mRow) >= mFilteredSize; mRow += mFilteredSize) {
            if (mY == mHeader.height || *mRow > 4) {
                return false;
            }
            std::byte* const pixels = mPixels + mY * mRowBytes;
            UnfilterRow(mForm, *mRow, mRow + 1, mY > 0 ? pixels - mRowBytes : mBlackRow.get(), pixels,
                        mHeader.width);
            ++mY;
        }
        return mY < mHeader.height || mRow == end;
    }

    const PNGHeader& mHeader;
    const FilteredForm mForm;
    const std::size_t mFilteredSize; // of a row, with the byte that names its filter
    std::byte* const mPixels;
    const std::size_t mRowBytes;
    CompressedBytes mInput;
    Window mWindow;
    std::unique_ptr<Inflater> mInflater;
    std::unique_ptr<std::byte[]> mBlackRow; // stands above the first
    InflateBuffers mBuffers;
    std::uint8_t* mRow = nullptr; // the first that is not complete
    std::uint32_t mY = 0;
    std::uint32_t mAdler = 1;
};

} // namespace

bool IsFastPNG(const PNGHeader& inHeader)
{
    return !inHeader.isInterlaced && FilteredFormOf(inHeader.colorType, inHeader.bitDepth).sourceBytes != 0;
}

bool DecodeFastPNG(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                   std::size_t inRowBytes)
{
    return FastDecoder(inSource, inHeader, outPixels, inRowBytes).Decode();
}

} // namespace VF
