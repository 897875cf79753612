#pragma once

namespace trhost::compare {

/// report.html, in which "{{name}}" stands for a text and "<!--pictures-->" for pictures.
extern const char kReportTemplate[];

} // namespace trhost::compare
