#pragma once

namespace BE {

/// Makes the reader and the writer known to the class factory.
void RegisterXMLFileClasses();

} // namespace BE
