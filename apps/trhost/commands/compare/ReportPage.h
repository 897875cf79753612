#pragma once

#include "../../support/JsonLine.h"

#include <string>

namespace trhost::compare {

/// The page of a report (report.html), in the language of the reader, in two parts: pictures go between them.
std::string ReportPageStart();
/// @param inData  what was compared and how; any texts.
std::string ReportPageEnd(const JsonLine& inData);

/// A text as it stands in HTML, in an element or in an attribute's double quotes.
std::string EscapedForHTML(std::string_view inUTF8);

} // namespace trhost::compare
