#pragma once

#include "platform/Departures.h"
#include "platform/EventMonitors.h"
#include "platform/MenuBar.h"
#include "platform/Pasteboard.h"
#include "platform/Popover.h"
#include "platform/SavePanel.h"
#include "platform/Screens.h"
#include "platform/Subscribers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

class FakePopover : public Platform::Popover {
public:
    explicit FakePopover(std::vector<std::string>& events) : events_(events) {}

    Platform::View content;
    Platform::Size size;
    int showings = 0;

    bool isShown() const override { return isShown_; }
    void setContent(Platform::View view) override { content = std::move(view); }
    void setContentSize(const Platform::Size& newSize) override { size = newSize; }
    void show(Platform::StatusItem& /*relativeTo*/) override {
        isShown_ = true;
        ++showings;
        events_.emplace_back("show popover");
    }
    void close() override {
        if (isShown_) {
            isShown_ = false;
            events_.emplace_back("close popover");
            if (onDidClose_) {
                onDidClose_();
            }
        }
    }
    void setOnDidClose(std::function<void()> callback) override {
        events_.emplace_back("popover delegate");
        onDidClose_ = std::move(callback);
    }

private:
    std::vector<std::string>& events_;
    bool isShown_ = false;
    std::function<void()> onDidClose_;
};

class FakeScreens : public Platform::Screens {
public:
    std::vector<Platform::Screen> all{{{0, 0, 1440, 900}, {0, 28, 1440, 872}}};
    std::optional<Platform::Point> pointer = Platform::Point{700, 400};

    std::vector<Platform::Screen> screens() override { return all; }
    std::optional<Platform::Screen> main() override {
        return all.empty() ? std::nullopt : std::optional(all.front());
    }
    std::optional<Platform::Screen> at(const Platform::Point& pixel) override {
        for (const auto& screen : all) {
            if (screen.frame.contains(pixel)) {
                return screen;
            }
        }
        return std::nullopt;
    }
    std::optional<Platform::Point> mouseLocation() override { return pointer; }
};

class FakeEventMonitors : public Platform::EventMonitors {
public:
    explicit FakeEventMonitors(std::vector<std::string>& events) : events_(events) {}

    std::optional<std::uint64_t> globalMask;

    /// Of all local monitors together.
    std::optional<std::uint64_t> localMask() const {
        std::optional<std::uint64_t> mask;
        for (const auto& [number, monitor] : locals_) {
            mask = mask.value_or(0) | monitor.mask;
        }
        return mask;
    }

    /// A click that goes to another program.
    void clickElsewhere(std::uint64_t type) {
        if (globalMask && (*globalMask >> type & 1U) != 0) {
            global_({type, 0, std::nullopt});
        }
    }

    /// Returns whether the key was swallowed.
    bool pressKey(std::optional<std::int64_t> keyCode) {
        return tellLocals({Platform::EventType::keyDown, 0, keyCode});
    }
    void movePointer() { tellLocals({Platform::EventType::mouseMoved, 0, std::nullopt}); }

    Platform::Subscription addGlobalMonitor(std::uint64_t eventMask,
                                            std::function<void(const Platform::Event&)> callback) override {
        events_.emplace_back("global monitor");
        globalMask = eventMask;
        global_ = std::move(callback);
        return Platform::Subscription([this] { globalMask.reset(); });
    }
    Platform::Subscription addLocalMonitor(std::uint64_t eventMask,
                                           std::function<bool(const Platform::Event&)> callback) override {
        events_.emplace_back("local monitor");
        const auto number = ++lastLocal_;
        locals_[number] = {eventMask, std::move(callback)};
        return Platform::Subscription([this, number] { locals_.erase(number); });
    }

private:
    struct LocalMonitor {
        std::uint64_t mask = 0;
        std::function<bool(const Platform::Event&)> callback;
    };

    /// As the toolkit does: the last one comes first, and none may go while it is told.
    bool tellLocals(const Platform::Event& event) {
        const auto before = locals_;
        const bool isSwallowed = std::any_of(before.rbegin(), before.rend(), [&](const auto& entry) {
            const auto& monitor = entry.second;
            return (monitor.mask >> event.type & 1U) != 0 && monitor.callback(event);
        });
        EXPECT_EQ(locals_.size(), before.size());
        return isSwallowed;
    }

    std::vector<std::string>& events_;
    std::function<void(const Platform::Event&)> global_;
    std::map<int, LocalMonitor> locals_;
    int lastLocal_ = 0;
};

class FakeDepartures : public Platform::Departures {
public:
    /// The user locks the session, or looks at another workspace.
    void depart() { observers_.tell(); }
    void lock() {
        observers_.tell();
        lockObservers_.tell(true);
    }
    void unlock() { lockObservers_.tell(false); }

    Platform::Subscription addObserver(std::function<void()> handler) override {
        return observers_.add(std::move(handler));
    }
    Platform::Subscription addLockObserver(std::function<void(bool isLocked)> handler) override {
        return lockObservers_.add(std::move(handler));
    }

private:
    Platform::Subscribers<> observers_;
    Platform::Subscribers<bool> lockObservers_;
};

class FakeMenuBar : public Platform::MenuBar {
public:
    std::optional<std::string> owner;
    std::optional<std::string> frontmost;

    std::optional<std::string> owningApplication() override { return owner; }
    std::optional<std::string> frontmostApplication() override { return frontmost; }
};

class FakePasteboard : public Platform::Pasteboard {
public:
    std::vector<std::vector<std::byte>> images;
    int clearings = 0;
    bool takesImages = true;

    void clearContents() override {
        images.clear();
        ++clearings;
    }
    bool writeImage(const std::vector<std::byte>& encoded) override {
        images.push_back(encoded);
        return takesImages;
    }
};

class FakeSavePanel : public Platform::SavePanel {
public:
    explicit FakeSavePanel(std::vector<std::string>& events) : events_(events) {}

    std::vector<Platform::SavePanelOptions> openings;

    /// What the user does with the panel.
    void choose(const std::optional<std::string>& path) { completion_(path); }

    void open(const Platform::SavePanelOptions& options,
              std::function<void(const std::optional<std::string>& path)> completion) override {
        events_.emplace_back("save panel");
        openings.push_back(options);
        superseded_ = std::exchange(completion_, std::move(completion));
    }
    /// The panel was taken over by a second request.
    void supersede() { superseded_(std::nullopt); }

private:
    std::vector<std::string>& events_;
    std::function<void(const std::optional<std::string>& path)> completion_;
    std::function<void(const std::optional<std::string>& path)> superseded_;
};

} // namespace TestSupport
