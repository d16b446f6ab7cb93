#pragma once

namespace velorn {

/// Redirects stderr to /dev/null while at least one object exists. Some decoders print messages of
/// their own in addition to the error that they return and that this program reports in one line.
/// The redirection applies to the whole process; messages for the user go to `ErrorStream`. Threads
/// may create and destroy objects at once.
class SilencedErrors {
public:
    SilencedErrors();
    ~SilencedErrors();
    SilencedErrors(const SilencedErrors&) = delete;
    SilencedErrors& operator=(const SilencedErrors&) = delete;
};

} // namespace velorn
