#include "RowMemory.h"

#include <new>
#include <utility>

namespace kioui::controls {
namespace {

constexpr std::size_t kPerBlock = 512;

} // namespace

RowMemory::RowMemory(std::size_t inBytesEach) : mBytesEach(inBytesEach) {}
RowMemory::~RowMemory() = default;

void RowMemory::AddBlock()
{
    const std::size_t bytes = kPerBlock * mBytesEach;
    mBlocks.push_back(std::make_unique_for_overwrite<std::byte[]>(bytes));
    mFresh = mBlocks.back().get();
    mEnd = mFresh + bytes;
}

void* RowMemory::Take()
{
    if (mFree == nullptr && mFresh == mEnd) {
        AddBlock();
    }
    ++mTaken;
    if (mFree != nullptr) {
        return std::exchange(mFree, mFree->next);
    }
    return std::exchange(mFresh, mFresh + mBytesEach);
}

void RowMemory::Give(void* inPlace) noexcept
{
    mFree = new (inPlace) Free{mFree};
    if (--mTaken == 0) {
        mFree = nullptr;
        mFresh = nullptr;
        mEnd = nullptr;
        mBlocks.clear();
    }
}

} // namespace kioui::controls
