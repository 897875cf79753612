#pragma once

#include "../support/Context.h"

#include <TR/TRAssetSpecifier.h>
#include <kiocore/serialization/Serializer.h>

#include <string>
#include <vector>

namespace trhost {

/// The list of specifiers on standard input. Stricter than the library, which reads what it can: an element
/// that names no file, or a member whose name is off by case only, is an error of whoever made the list.
/// @throws Failure (kExit_Failed) naming the place.
std::vector<TR::AssetSpecifier> ReadSpecifiers();

/// Prints a list: readable, or on one line with --json.
template <typename T>
void PrintList(Output& ioOutput, const std::vector<T>& inList)
{
    using kiocore::serialization::Serializer;
    ioOutput.Document(Serializer<std::vector<T>>::ToUTF8String(inList, !ioOutput.IsJson()));
}

} // namespace trhost
