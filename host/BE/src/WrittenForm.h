#pragma once

#include "XMLDocument.h"

#include <string_view>

namespace BE {

/// Fills the table from a document that stands as XMLDataWriter writes it, as nearly all do: in one pass over
/// the bytes, which stay as they are.
/// @param inBytes  accepted by CheckBytes; kSlackBytes zeros follow.
/// @return false when anything is otherwise, right or wrong, and for maps with an ItemKey, which are rare. A
///     parser has to judge then, and the table holds a part of the elements.
bool ReadWrittenForm(std::string_view inBytes, DocumentTable& outTable);

} // namespace BE
