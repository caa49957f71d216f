#pragma once

#include <unistd.h>
#include <utility>

namespace backends {

// A file descriptor that is ours to close. -1 is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.m_number, -1));
        return *this;
    }

    int number() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }
    // Closes what it has and takes another.
    void reset(int number = -1)
    {
        if (m_number >= 0)
            close(m_number);
        m_number = number;
    }

private:
    int m_number;
};

} // namespace backends
