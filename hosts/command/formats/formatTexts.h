#pragma once

#include <string>
#include <vector>

namespace velorn {

/// "A, B and C"
std::string enumeration(const std::vector<std::string>& names);

// Texts made from the table of formats: help, manual page and documentation state what the checks
// apply.

/// "JPEG, PNG, ... and HDR": the formats that the command writes.
std::string writtenFormatNames();

/// The formats with their extensions, for help texts: those written, and those only read.
std::string formatHelp();

/// A section of the manual page (troff) that describes every format.
std::string formatManual();

/// A table (Markdown) that describes every format.
std::string formatTableMarkdown();

} // namespace velorn
