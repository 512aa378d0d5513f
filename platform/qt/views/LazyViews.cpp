#include "platform/qt/views/LazyViews.h"

#include <utility>

namespace QtPlatform {
namespace {

class NoWindow : public Platform::Window {
public:
    bool isVisible() const override { return false; }
    void setTitle(const std::string& /*title*/) override {}
    void center() override {}
    void makeKeyAndOrderFront() override {}
    void orderFrontRegardless() override {}
    void close() override {}
    void setOnWillClose(std::function<void()> /*callback*/) override {}
};

} // namespace

LazyPopover::LazyPopover(ViewLibrary& library, const QtScreens& screens, WindowManagerLink windowManager)
    : library_(library),
      screens_(screens),
      windowManager_(std::move(windowManager)) {}

bool LazyPopover::isShown() const {
    return popover_ && popover_->isShown();
}

void LazyPopover::setContent(Platform::View content) {
    const bool isNothing = content.source.empty();
    if (auto* const popover = isNothing ? popover_.get() : loaded()) {
        popover->setContent(std::move(content));
    }
}

void LazyPopover::setContentSize(const Platform::Size& size) {
    contentSize_ = size;
    if (popover_) {
        popover_->setContentSize(size);
    }
}

void LazyPopover::show(Platform::StatusItem& relativeTo) {
    if (auto* const popover = loaded()) {
        popover->show(relativeTo);
    }
}

void LazyPopover::close() {
    if (popover_) {
        popover_->close();
    }
}

void LazyPopover::setOnDidClose(std::function<void()> callback) {
    onDidClose_ = std::move(callback);
    if (popover_) {
        popover_->setOnDidClose(onDidClose_);
    }
}

Platform::Popover* LazyPopover::loaded() {
    auto* const toolkit = popover_ ? nullptr : library_.toolkit();
    if (toolkit != nullptr) {
        popover_ = toolkit->makePopover(screens_, windowManager_);
        popover_->setContentSize(contentSize_);
        popover_->setOnDidClose(onDidClose_);
    }
    return popover_.get();
}

LazyWindows::LazyWindows(ViewLibrary& library, const QtScreens& screens, WindowManagerLink windowManager)
    : library_(library),
      screens_(screens),
      windowManager_(std::move(windowManager)) {}

std::unique_ptr<Platform::Window> LazyWindows::makeWindow(Platform::View content,
                                                          const Platform::Size& contentSize,
                                                          const Platform::WindowStyle& style) {
    auto* const toolkit = library_.toolkit();
    if (toolkit == nullptr) {
        return std::make_unique<NoWindow>();
    }
    if (!windows_) {
        windows_ = toolkit->makeWindows(screens_, windowManager_);
    }
    return windows_->makeWindow(std::move(content), contentSize, style);
}

} // namespace QtPlatform
