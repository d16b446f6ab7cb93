#pragma once

namespace velorn {

/// Opens the standard input, output and error where the process was started without them. No file
/// then gets their numbers. Reading from them, and writing to them, fails as if they were closed.
void reserveStandardDescriptors();

/// Whether `descriptor` is a pipe or a socket whose reader is gone.
bool isReaderGone(int descriptor);

} // namespace velorn
