#pragma once

#include <functional>
#include <utility>

namespace Platform {

/// A running subscription: its destruction ends it. Movable, not copyable; an empty one does nothing.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            finish();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { finish(); }

private:
    void finish() {
        if (auto end = std::exchange(end_, nullptr)) {
            end();
        }
    }

    std::function<void()> end_;
};

} // namespace Platform
