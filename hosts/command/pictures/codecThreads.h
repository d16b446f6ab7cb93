#pragma once

namespace velorn {

/// Limits the threads that the image library uses for reading and writing, in all calls of the
/// process.
void setCodecThreads(int count);

} // namespace velorn
