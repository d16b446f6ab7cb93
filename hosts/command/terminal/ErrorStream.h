#pragma once

#include <ostream>
#include <streambuf>

namespace velorn {

/// Writes to what stderr is when the object is created, whatever stderr is redirected to later. Not
/// buffered: a text that is written in one piece appears in one piece.
class ErrorStream : public std::ostream {
public:
    ErrorStream();
    ~ErrorStream() override;
    ErrorStream(const ErrorStream&) = delete;
    ErrorStream& operator=(const ErrorStream&) = delete;

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(int descriptor) : m_descriptor(descriptor) {}

    private:
        int_type overflow(int_type letter) override;
        std::streamsize xsputn(const char* text, std::streamsize size) override;

        int m_descriptor;
    };

    int m_descriptor;
    Buffer m_buffer;
};

} // namespace velorn
