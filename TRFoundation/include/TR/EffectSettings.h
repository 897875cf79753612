#pragma once

#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

#include <boost/variant.hpp>

#include <memory>
#include <set>
#include <vector>

namespace TR {

/// One of a plug-in's answers to a question of the host's own: yes or no, which the user can change, or a
/// text. Give texts as UTF16String: a literal would become true.
using AttributeValue = boost::variant<bool, kiocore::UTF16String>;

/// One effect plug-in as the plug-in manager shows and edits it.
struct EffectSettings {
    bool enabled = false;
    kiocore::UTF16String name;
    kiocore::UTF16String filePath;
    kiocore::ImmutableString matchName;          ///< the host's; neither shown nor changed
    kiocore::UTF16String supportURL;             ///< empty when there is none
    bool isFirstParty = false;                   ///< comes with the host
    std::vector<AttributeValue> attributeValues; ///< by the index of AllEffectSettings::attributeNames
};

/// Records in the order of their addresses.
using EffectSettingsSet = std::set<std::shared_ptr<EffectSettings>>;

/// What the plug-in manager shows. Copies share the records.
struct AllEffectSettings {
    EffectSettingsSet settings;
    std::vector<kiocore::UTF16String>
        attributeNames; ///< titles of the host's own columns; at most 96 are shown
};

} // namespace TR
