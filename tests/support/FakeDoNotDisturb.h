#pragma once

#include "platform/DoNotDisturb.h"
#include "platform/Subscribers.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A switch that its user turns as the test says.
class FakeDoNotDisturb : public Platform::DoNotDisturb {
public:
    explicit FakeDoNotDisturb(std::vector<std::string>& events) : events_(events) {}

    Habits does;

    void turn(std::optional<bool> isOn) {
        isOn_ = isOn;
        isHeld_ = false;
        observers_.tell();
    }

    /// As an earlier run has left it.
    void leaveHeld() {
        isOn_ = true;
        isHeld_ = true;
    }

    std::optional<bool> isOn() override { return isOn_; }

    Platform::Subscription addObserver(std::function<void()> onChange) override {
        return observers_.add(std::move(onChange));
    }

    Habits habits() const override { return does; }

    void hold() override {
        events_.emplace_back("hold quiet");
        if (isOn_ == false) {
            turn(true);
            isHeld_ = true;
        }
    }

    void giveBack() override {
        events_.emplace_back("give quiet back");
        if (isHeld_) {
            turn(false);
        }
    }

    bool isHeld() const override { return isHeld_; }

private:
    std::vector<std::string>& events_;
    std::optional<bool> isOn_;
    bool isHeld_ = false;
    Platform::Subscribers<> observers_;
};

} // namespace TestSupport
