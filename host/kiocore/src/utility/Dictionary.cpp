#include <kiocore/utility/Dictionary.h>

#include <kiocore/serialization/JSON.h>
#include <kiocore/utility/UTF16String.h>

#include <algorithm>
#include <cmath>

namespace kiocore::utility {
namespace {

/// One value as JSON can hold it, whatever it is.
struct LoggableJSON : boost::static_visitor<serialization::JSON> {
    serialization::JSON operator()(double inNumber) const
    {
        return std::isfinite(inNumber) ? serialization::JSON(inNumber) : serialization::JSON();
    }
    serialization::JSON operator()(const ImmutableString& inText) const { return Loggable(inText); }
    template <typename T>
    serialization::JSON operator()(T inValue) const
    {
        return inValue;
    }

    static std::string Loggable(std::string_view inText) { return ToUTF8(ToUTF16(inText)); }
};

} // namespace

Dictionary::Dictionary(std::initializer_list<Entry> inEntries)
{
    for (const Entry& entry : inEntries) {
        SetEntry(entry);
    }
}

Dictionary::Dictionary(const Dictionary& inOther)
    : mHasInline(inOther.mHasInline), mInline(inOther.mInline),
      mEntries(inOther.mEntries ? std::make_unique<std::vector<Entry>>(*inOther.mEntries) : nullptr)
{}

Dictionary& Dictionary::operator=(Dictionary&& inOther) noexcept
{
    if (this != &inOther) {
        mHasInline = std::exchange(inOther.mHasInline, false);
        mInline.key = std::move(inOther.mInline.key);
        mInline.value = std::move(inOther.mInline.value);
        mEntries = std::move(inOther.mEntries);
    }
    return *this;
}

const Dictionary::Value* Dictionary::Find(std::string_view inKey) const noexcept
{
    for (const Entry& entry : *this) {
        if (entry.key.View() == inKey) {
            return &entry.value;
        }
    }
    return nullptr;
}

void Dictionary::SetEntry(Entry inEntry)
{
    if (Value* value = const_cast<Value*>(Find(inEntry.key))) {
        value->swap(inEntry.value);
        return;
    }
    if (Size() == 0) {
        mInline = std::move(inEntry);
        mHasInline = true;
        return;
    }
    if (!mEntries) {
        auto entries = std::make_unique<std::vector<Entry>>();
        entries->reserve(4);
        entries->push_back(std::exchange(mInline, Entry()));
        mEntries = std::move(entries);
        mHasInline = false;
    }
    const auto place = std::upper_bound(
        mEntries->begin(), mEntries->end(), inEntry.key,
        [](const ImmutableString& inKey, const Entry& inOther) { return inKey < inOther.key; });
    mEntries->insert(place, std::move(inEntry));
}

std::string Dictionary::AsJSON() const
{
    serialization::JSONObject object;
    for (const Entry& entry : *this) {
        object[LoggableJSON::Loggable(entry.key)] = boost::apply_visitor(LoggableJSON(), entry.value);
    }
    return serialization::GetJSONUTF8String(object, false);
}

} // namespace kiocore::utility
