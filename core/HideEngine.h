#pragma once

#include "core/AppHiding.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace CurtainCore {

/// Privacy mode: hides the private apps, hides them again when they return, and shows again exactly those
/// that it hid and that were visible before. Not thread-safe; its owner calls it from the main thread only.
/// It may be called while it calls `hiding`; of two switches the one that began last counts.
class HideEngine {
public:
    /// What is known of a switch-on, for another engine to take it up.
    struct State {
        std::vector<std::string> targets;
        std::set<std::string> hiddenByUs;
        /// Whether each target that ran when it was taken in was hidden already.
        std::map<std::string, bool> previousHidden;

        bool operator==(const State&) const = default;
    };

    /// `hiding` outlives the engine.
    explicit HideEngine(AppHiding& hiding);

    /// Told of every change of `isActive` and `state`: before an app is hidden, after it has been shown.
    std::function<void()> onChange;

    bool isActive() const { return isActive_; }
    /// The private apps of this switch-on that were not revealed since; none while privacy mode is off.
    const std::vector<std::string>& targets() const { return state_.targets; }
    const State& state() const { return state_; }

    /// Switches privacy mode on. What an earlier switch-on hid is forgotten, not shown: for a clean switch
    /// call `deactivate` first.
    void activate(std::vector<std::string> targets);

    /// Takes a switch-on up where another engine left it, and goes on as `hideAgain` does.
    void resume(State earlier);

    /// Hides once more what it has hidden, and the targets that can be seen: whatever there was to hide may
    /// not have been known before. Nothing while privacy mode is off.
    void hideAgain();

    /// Switches privacy mode off. Apps that only `reapply` hid stay hidden.
    void deactivate();

    /// To be called when an app was launched or brought to the front; true when it was a private one and was
    /// hidden.
    bool reapply(const std::string& activatedBundleID);

    /// Shows an app and takes it out of privacy mode until the next switch-on.
    void reveal(const std::string& bundleID);

    /// Takes one more app into the running switch-on, or hides a target that can be seen after all:
    /// `deactivate` shows again what was visible at this moment. The other targets stay as they are.
    void addTarget(const std::string& bundleID);

    /// Takes an app out of the running switch-on and shows it where privacy mode has hidden it, and its user
    /// had not before.
    void removeTarget(const std::string& bundleID);

private:
    bool isTarget(const std::string& bundleID) const;
    void noteChange() const;
    void forget(const std::string& bundleID);
    void hideAndRemember(const std::string& target);
    void hide(const std::string& bundleID);

    AppHiding& hiding_;
    bool isActive_ = false;
    /// Counts the switches on and off.
    std::uint64_t switches_ = 0;
    State state_;
};

} // namespace CurtainCore
