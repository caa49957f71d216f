#pragma once

#include <functional>
#include <utility>

namespace platform {

// A subscription that ends when this ends. Cancelling twice is harmless; a delivery that is running goes on to its
// end, and nothing more is delivered.
class [[nodiscard]] Cancellable {
public:
    Cancellable() = default;
    explicit Cancellable(std::function<void()> cancel)
        : m_cancel(std::move(cancel))
    {
    }
    ~Cancellable() { cancel(); }
    Cancellable(Cancellable&& other) noexcept
        : m_cancel(std::exchange(other.m_cancel, nullptr))
    {
    }
    Cancellable& operator=(Cancellable&& other) noexcept
    {
        if (this != &other) {
            cancel();
            m_cancel = std::exchange(other.m_cancel, nullptr);
        }
        return *this;
    }

    void cancel()
    {
        if (auto const cancel = std::exchange(m_cancel, nullptr))
            cancel();
    }

private:
    std::function<void()> m_cancel;
};

} // namespace platform
