#pragma once

#include "core/AppHiding.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace TestSupport {

/// Answers from a table and writes down every call.
class RecordingAppHiding : public CurtainCore::AppHiding {
public:
    std::vector<std::string> calls;
    bool hidingTakesEffect = true;
    bool hiddenIsKnown = true;
    std::function<void()> onHide;
    std::function<void()> onUnhide;

    void run(const std::string& bundleID) { hidden_[bundleID] = false; }
    void runHidden(const std::string& bundleID) { hidden_[bundleID] = true; }

    void quit(const std::string& bundleID) { hidden_.erase(bundleID); }
    bool isVisible(const std::string& bundleID) const { return !hidden_.at(bundleID); }
    long count(const std::string& call) const { return std::ranges::count(calls, call); }

    bool isRunning(const std::string& bundleID) override {
        calls.push_back("isRunning " + bundleID);
        return hidden_.contains(bundleID);
    }

    std::optional<bool> isHidden(const std::string& bundleID) override {
        calls.push_back("isHidden " + bundleID);
        const auto found = hidden_.find(bundleID);
        return found == hidden_.end() || !hiddenIsKnown ? std::nullopt : std::optional(found->second);
    }

    void hide(const std::string& bundleID) override {
        calls.push_back("hide " + bundleID);
        if (hidingTakesEffect) {
            hidden_[bundleID] = true;
        }
        if (onHide) {
            onHide();
        }
    }

    void unhide(const std::string& bundleID) override {
        calls.push_back("unhide " + bundleID);
        hidden_[bundleID] = false;
        if (onUnhide) {
            onUnhide();
        }
    }

private:
    std::map<std::string, bool> hidden_;
};

} // namespace TestSupport
