#pragma once

#include <TR/EffectSettings.h>

namespace TR {

/// A text that effects are searched for, in their names, files and texts of the host's own columns. Of the
/// letters only A to Z are the same as a to z.
class EffectSearch {
public:
    explicit EffectSearch(kiocore::UTF16String inText);
    /// An empty text finds everything.
    bool Finds(const EffectSettings& inSettings) const;

private:
    bool OccursIn(const kiocore::UTF16String& inText) const;

    kiocore::UTF16String mFolded;
};

} // namespace TR
