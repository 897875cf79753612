#include "PluginManagerState.h"

#include <kiocore/serialization/Serializer.h>

namespace kiocore::serialization {

// Members that are missing read as 0 or false.
template <>
struct JSONConvert<TR::ColumnState> {
    static JSON ToJSON(const TR::ColumnState& inState)
    {
        JSONObject object;
        AddMember(object, "id", inState.id);
        AddMember(object, "width", inState.width);
        AddMember(object, "index", inState.index);
        return object;
    }
    static TR::ColumnState FromJSON(const JSON& inValue)
    {
        TR::ColumnState state;
        const JSONObject& object = AsObject(inValue);
        ReadMember(object, "id", state.id);
        ReadMember(object, "width", state.width);
        ReadMember(object, "index", state.index);
        return state;
    }
};

template <>
struct JSONConvert<TR::TreeState> {
    static JSON ToJSON(const TR::TreeState& inState)
    {
        JSONObject object;
        AddMember(object, "columns", inState.columns);
        return object;
    }
    static TR::TreeState FromJSON(const JSON& inValue)
    {
        TR::TreeState state;
        ReadMember(AsObject(inValue), "columns", state.columns);
        return state;
    }
};

template <>
struct JSONConvert<TR::CheckboxState> {
    static JSON ToJSON(const TR::CheckboxState& inState)
    {
        JSONObject object;
        AddMember(object, "checked", inState.checked);
        return object;
    }
    static TR::CheckboxState FromJSON(const JSON& inValue)
    {
        TR::CheckboxState state;
        ReadMember(AsObject(inValue), "checked", state.checked);
        return state;
    }
};

/// One entry of a map with numbers for keys: the key and the value, as an array of two.
template <typename T>
struct JSONConvert<std::pair<std::uint32_t, T>> {
    static JSON ToJSON(const std::pair<std::uint32_t, T>& inEntry)
    {
        return JSONArray{JSONConvert<std::uint32_t>::ToJSON(inEntry.first),
                         JSONConvert<T>::ToJSON(inEntry.second)};
    }
    static std::pair<std::uint32_t, T> FromJSON(const JSON& inValue)
    {
        const JSONArray& entry = AsArray(inValue);
        if (entry.size() < 2) {
            throw bad_cast_exception("an array of " + std::to_string(entry.size()), "a key and a value");
        }
        return {FromElement<std::uint32_t>(entry[0], 0), FromElement<T>(entry[1], 1)};
    }
};

template <typename T>
struct JSONConvert<std::map<std::uint32_t, T>> {
    using Entries = std::vector<std::pair<std::uint32_t, T>>;

    static JSON ToJSON(const std::map<std::uint32_t, T>& inValues)
    {
        return JSONConvert<Entries>::ToJSON(Entries(inValues.begin(), inValues.end()));
    }
    static std::map<std::uint32_t, T> FromJSON(const JSON& inValue)
    {
        const Entries entries = JSONConvert<Entries>::FromJSON(inValue);
        return {entries.begin(), entries.end()};
    }
};

} // namespace kiocore::serialization

namespace TR {

using namespace kiocore::serialization;

std::string WriteState(const PluginManagerState& inState)
{
    JSONObject root;
    AddMember(root, "trees", inState.trees);
    AddMember(root, "checkboxes", inState.checkboxes);
    return GetJSONUTF8String(root, false);
}

PluginManagerState ReadState(const std::string& inText)
{
    const JSON document = GetJSONFromUTF8String(inText);
    const JSON* root = &document;
    if (const auto* object = boost::any_cast<JSONObject>(root)) {
        const auto wrapped = object->find("SerializerWrappedObject"); // as some hosts store it
        root = wrapped != object->end() ? &wrapped->second : root;
    }
    PluginManagerState state;
    ReadMember(AsObject(*root), "trees", state.trees);
    ReadMember(AsObject(*root), "checkboxes", state.checkboxes);
    return state;
}

} // namespace TR
