#pragma once

#include "hosts/command/arguments/ArgumentParser.h"

namespace velorn {

/// The option `--threads` of the commands that compute.
class ThreadsOption {
public:
    ThreadsOption() = default;
    ThreadsOption(const ThreadsOption&) = delete;
    ThreadsOption& operator=(const ThreadsOption&) = delete;

    /// Adds the option to `parser`, which keeps a reference to this object.
    void addTo(ArgumentParser& parser, const char* group);

    /// The largest number of threads; 0 is one for each processor.
    /// @throws UsageFailure when the number is out of range
    int result() const;

private:
    int m_threads = 0;
};

} // namespace velorn
