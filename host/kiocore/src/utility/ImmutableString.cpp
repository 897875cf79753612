#include <kiocore/utility/ImmutableString.h>

#include <new>

namespace kiocore::utility {

/// A counted block; the text and its zero byte follow it.
struct ImmutableString::Shared {
    std::atomic<std::size_t> references{1};
    std::size_t size;

    char* Text() { return reinterpret_cast<char*>(this + 1); }
};

ImmutableString::ImmutableString(std::string_view inText)
{
    if (inText.size() <= kInlineCapacity) {
        SetInline(inText);
        return;
    }
    auto* shared = new (::operator new(sizeof(Shared) + inText.size() + 1)) Shared;
    shared->size = inText.size();
    std::memcpy(shared->Text(), inText.data(), inText.size());
    shared->Text()[inText.size()] = '\0';
    std::memset(mBytes, 0, sizeof(mBytes));
    std::memcpy(mBytes, &shared, sizeof(shared));
    mBytes[kSizeAt] = kIsShared;
}

ImmutableString::ImmutableString(const ImmutableString& inOther) noexcept
{
    std::memcpy(mBytes, inOther.mBytes, sizeof(mBytes));
    if (IsShared()) {
        Get()->references.fetch_add(1, std::memory_order_relaxed);
    }
}

ImmutableString::ImmutableString(ImmutableString&& inOther) noexcept
{
    std::memcpy(mBytes, inOther.mBytes, sizeof(mBytes));
    inOther.SetInline({});
}

ImmutableString& ImmutableString::operator=(const ImmutableString& inOther) noexcept
{
    if (this != &inOther) {
        *this = ImmutableString(inOther);
    }
    return *this;
}

ImmutableString& ImmutableString::operator=(ImmutableString&& inOther) noexcept
{
    if (this != &inOther) {
        if (IsShared()) {
            Release();
        }
        std::memcpy(mBytes, inOther.mBytes, sizeof(mBytes));
        inOther.SetInline({});
    }
    return *this;
}

const ImmutableString& ImmutableString::Empty()
{
    static const ImmutableString empty;
    return empty;
}

ImmutableString::Shared* ImmutableString::Get() const noexcept
{
    Shared* shared;
    std::memcpy(&shared, mBytes, sizeof(shared));
    return shared;
}

std::string_view ImmutableString::SharedView() const noexcept
{
    Shared* shared = Get();
    return {shared->Text(), shared->size};
}

void ImmutableString::Release() noexcept
{
    Shared* shared = Get();
    if (shared->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        shared->~Shared();
        ::operator delete(shared);
    }
}

} // namespace kiocore::utility
