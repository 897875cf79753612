#include <kiocore/utility/ImmutableString.h>

#include <new>

namespace kiocore::utility {
namespace {

using Counter = std::atomic<std::size_t>;

} // namespace

ImmutableString::ImmutableString(std::string_view inText)
{
    if (inText.size() <= kInlineCapacity) {
        SetInline(inText);
        return;
    }
    void* block = ::operator new(sizeof(Counter) + inText.size() + 1);
    char* text = reinterpret_cast<char*>(new (block) Counter(1) + 1);
    std::memcpy(text, inText.data(), inText.size());
    text[inText.size()] = '\0';
    SetElsewhere({text, inText.size(), kIsShared});
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

void ImmutableString::Release() noexcept
{
    Counter& references = References();
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        references.~Counter();
        ::operator delete(&references);
    }
}

} // namespace kiocore::utility
