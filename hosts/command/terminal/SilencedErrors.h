#pragma once

namespace velorn {

/// Redirects stderr to /dev/null during its lifetime. Some decoders print messages of their own in
/// addition to the error that they return and that this program reports in one line. The
/// redirection applies to the whole process.
class SilencedErrors {
public:
    SilencedErrors();
    ~SilencedErrors();
    SilencedErrors(const SilencedErrors&) = delete;
    SilencedErrors& operator=(const SilencedErrors&) = delete;

private:
    int m_former;
};

} // namespace velorn
