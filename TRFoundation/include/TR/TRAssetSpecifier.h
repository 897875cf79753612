#pragma once

#include <BE/ProjectItem.h>
#include <kiocore/Export.h>
#include <kiocore/serialization/JSONConvert.h>
#include <kiomediatypes/TickTime.h>

#include <vector>

namespace TR {

using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiomediatypes::TickTime;

/// A media file and the part of it that is meant.
///
/// Threading: a plain value.
class KIO_EXPORT AssetSpecifier {
public:
    /// @param inInPoint, inOutPoint  the unset time where there is none.
    AssetSpecifier(const UTF16String& inPath, const TickTime& inInPoint, const TickTime& inOutPoint);
    virtual ~AssetSpecifier();
    AssetSpecifier(const AssetSpecifier&);
    AssetSpecifier(AssetSpecifier&&) noexcept;
    AssetSpecifier& operator=(const AssetSpecifier&);
    AssetSpecifier& operator=(AssetSpecifier&&) noexcept;

    const UTF16String& GetPath() const { return mPath; }
    const TickTime& GetInPoint() const { return mInPoint; }
    const TickTime& GetOutPoint() const { return mOutPoint; }

private:
    UTF16String mPath;
    TickTime mInPoint;
    TickTime mOutPoint;
};

/// The paths, in order.
KIO_EXPORT std::vector<UTF16String> ConvertToPathVector(const std::vector<AssetSpecifier>& inSpecifiers);
/// One specifier a path, in order, without points.
KIO_EXPORT std::vector<AssetSpecifier> ConvertFromPathVector(const std::vector<UTF16String>& inPaths);

/// The path by which a project item is found: the text property under
/// BE::kProjectItemOriginalAssetNamePathPropertyKey, or else the path of a clip's first media. Empty when it
/// has neither.
KIO_EXPORT UTF16String GetAssetPath(const InterfaceRef<BE::IProjectItem>& inItem);

/// Sets the points of every item whose path (GetAssetPath) is exactly that of a specifier, specifiers in
/// order; the unset time takes a point away. What an item refuses (see BE::ProjectItemUtils) leaves that item
/// as it was.
///
/// Threading: as the items' project.
KIO_EXPORT void UpdateProjectItemsWithInOutPoints(const std::vector<InterfaceRef<BE::IProjectItem>>& inItems,
                                                  const std::vector<AssetSpecifier>& inSpecifiers);

} // namespace TR

/// An object with "Path", "InPoint" and "OutPoint". What is no object or has no "Path" is read as an empty
/// path without points; a point that is absent as the unset time.
template <>
struct KIO_EXPORT kiocore::serialization::JSONConvert<TR::AssetSpecifier> {
    static JSON ToJSON(const TR::AssetSpecifier& inSpecifier);
    /// @throws bad_cast_exception for a member of another type.
    static TR::AssetSpecifier FromJSON(const JSON& inValue);
};
