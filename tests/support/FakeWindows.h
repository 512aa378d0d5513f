#pragma once

#include "platform/Windows.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Windows that nobody sees. What happens to them is written into a list of events, in order.
class FakeWindows : public Platform::Windows {
public:
    class Window : public Platform::Window {
    public:
        Window(FakeWindows& windows, Platform::View content, const Platform::Size& contentSize,
               const Platform::WindowStyle& windowStyle)
            : view(std::move(content)),
              size(contentSize),
              style(windowStyle),
              windows_(windows) {
            windows_.all.push_back(this);
        }
        Window(const Window&) = delete;
        Window& operator=(const Window&) = delete;
        ~Window() override {
            close();
            std::erase(windows_.all, this);
        }

        Platform::View view;
        Platform::Size size;
        Platform::WindowStyle style;
        std::string title;

        bool isVisible() const override { return isVisible_; }
        void setTitle(const std::string& newTitle) override { title = newTitle; }
        void center() override { windows_.events_.emplace_back("centre window"); }
        void makeKeyAndOrderFront() override {
            windows_.events_.emplace_back("make window key");
            isVisible_ = true;
        }
        void orderFrontRegardless() override {
            windows_.events_.emplace_back("order window front");
            isVisible_ = true;
        }
        /// Also what the user does with the window's close button.
        void close() override {
            if (isVisible_) {
                if (onWillClose_) {
                    onWillClose_();
                }
                windows_.events_.emplace_back("close window");
                isVisible_ = false;
            }
        }
        void setOnWillClose(std::function<void()> callback) override { onWillClose_ = std::move(callback); }

    private:
        FakeWindows& windows_;
        bool isVisible_ = false;
        std::function<void()> onWillClose_;
    };

    explicit FakeWindows(std::vector<std::string>& events) : events_(events) {}

    /// The windows that exist, oldest first.
    std::vector<Window*> all;
    int made = 0;

    std::unique_ptr<Platform::Window> makeWindow(Platform::View content, const Platform::Size& contentSize,
                                                 const Platform::WindowStyle& style) override {
        ++made;
        return std::make_unique<Window>(*this, std::move(content), contentSize, style);
    }

private:
    std::vector<std::string>& events_;
};

} // namespace TestSupport
