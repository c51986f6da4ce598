#pragma once

#include <unistd.h>
#include <utility>

namespace quillmark {

/// An open file descriptor, closed at the end; of a negative number nothing.
class Descriptor {
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (isOpen())
            close(m_number);
    }

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

} // namespace quillmark
