#include "hosts/command/options/ThreadsOption.h"

#include "hosts/command/arguments/NumberRange.h"

namespace velorn {
namespace {

constexpr NumberRange kThreads{0.0f, 256.0f};

} // namespace

void ThreadsOption::addTo(ArgumentParser& parser, const char* group) {
    parser
        .add("--threads", m_threads,
             kThreads.text() + ", default: one for each processor\nLargest number of threads.")
        .valueName("N")
        .group(group);
}

int ThreadsOption::result() const {
    kThreads.check("--threads", static_cast<float>(m_threads));
    return m_threads;
}

} // namespace velorn
