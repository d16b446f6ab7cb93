#pragma once

namespace velorn {

/// Turns stderr to nowhere while it lives. Some decoders print complaints of their own, besides
/// the failure that they report and that the user is told in one line.
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
