#include "RunningCalls.h"

#include <array>
#include <bit>
#include <utility>

namespace trhost::effects {

/// The table and which of its slots threads have.
struct RunningCalls::Slots {
    explicit Slots(std::shared_ptr<CallTable> inTable) : table(std::move(inTable)) {}

    CallSlot* Take() noexcept
    {
        std::uint64_t before = taken.load(std::memory_order_relaxed);
        for (;;) {
            const int free = std::countr_one(before);
            if (free == static_cast<int>(CallTable::kSlotCount)) {
                return nullptr;
            }
            if (taken.compare_exchange_weak(before, before | std::uint64_t{1} << free,
                                            std::memory_order_acquire, std::memory_order_relaxed)) {
                return &table->slots[free];
            }
        }
    }
    void GiveBack(CallSlot* inSlot) noexcept
    {
        inSlot->Pop(0);
        const auto index = static_cast<std::size_t>(inSlot - table->slots.data());
        taken.fetch_and(~(std::uint64_t{1} << index), std::memory_order_release);
    }

    const std::shared_ptr<CallTable> table;
    std::atomic<std::uint64_t> taken{0};
};

namespace {

static_assert(CallTable::kSlotCount == 64, "one bit for each");

/// Where a thread is. Plain, so that using it needs no check for being made.
struct Position {
    const void* slots = nullptr; // whose slot it is; compared only
    CallSlot* slot = nullptr;
    std::uint32_t depth = 0;
};
constinit thread_local std::array<Position, kCallKeeperCount> tPositions{};
constinit thread_local bool tIsEnding = false; // no slots any more

/// What a thread has to give back when it ends. Apart from the above, as this one has to be made.
class Possessions {
public:
    ~Possessions()
    {
        tIsEnding = true;
        for (std::size_t keeper = 0; keeper < kCallKeeperCount; ++keeper) {
            LetGo(keeper);
        }
    }

    void Exchange(std::size_t inKeeper, const std::shared_ptr<RunningCalls::Slots>& inSlots) noexcept
    {
        if (mSlots[inKeeper] != inSlots) {
            LetGo(inKeeper);
            mSlots[inKeeper] = inSlots;
        }
        Position& position = tPositions[inKeeper];
        position.slots = inSlots.get();
        position.slot = inSlots->Take();
    }

private:
    void LetGo(std::size_t inKeeper) noexcept
    {
        Position& position = tPositions[inKeeper];
        if (mSlots[inKeeper] && position.slot) {
            mSlots[inKeeper]->GiveBack(position.slot);
        }
        mSlots[inKeeper].reset();
        position = {};
    }

    std::array<std::shared_ptr<RunningCalls::Slots>, kCallKeeperCount> mSlots;
};
thread_local Possessions tPossessions;

} // namespace

RunningCalls::RunningCalls(CallKeeper inKeeper, std::shared_ptr<CallTable> inTable)
    : mKeeper(inKeeper), mSlots(std::make_shared<Slots>(std::move(inTable)))
{}

RunningCalls::~RunningCalls() = default;

const CallTable& RunningCalls::Table() const
{
    return *mSlots->table;
}

void RunningCalls::Enter(std::string_view inName, std::int64_t inStartTicks) noexcept
{
    Position& position = tPositions[static_cast<std::size_t>(mKeeper)];
    if (position.slots != mSlots.get() || (!position.slot && position.depth == 0)) [[unlikely]] {
        if (tIsEnding) {
            return;
        }
        tPossessions.Exchange(static_cast<std::size_t>(mKeeper), mSlots);
    }
    if (position.slot) {
        position.slot->Push(position.depth, inName, inStartTicks);
    }
    ++position.depth;
}

void RunningCalls::Leave() noexcept
{
    Position& position = tPositions[static_cast<std::size_t>(mKeeper)];
    if (position.slots != mSlots.get() || position.depth == 0) {
        return;
    }
    --position.depth;
    if (position.slot) {
        position.slot->Pop(position.depth);
    }
}

} // namespace trhost::effects
