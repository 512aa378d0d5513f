#pragma once

#include "platform/Event.h"
#include "platform/Geometry.h"
#include "platform/Image.h"
#include "platform/Menu.h"
#include "platform/Subscription.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Platform {

/// The program's place in the panel. Its destruction removes it. Main thread only.
class StatusItem {
public:
    /// Receives the event that led to the action, if there was one.
    using Action = std::function<void(const std::optional<Event>&)>;

    virtual ~StatusItem() = default;

    virtual void setImage(const Image& image) = 0;
    /// What is shown while the pointer rests on the item, and what a screen reader says of it, where the
    /// panel has such a thing. UTF-8, one line.
    virtual void setToolTip(const std::string& text) = 0;
    /// `action` is called for those events whose type's bit is set in `eventMask`.
    virtual void setAction(std::uint64_t eventMask, Action action) = 0;
    /// What a click with the middle button does.
    virtual void setSecondaryAction(std::function<void()> action) = 0;
    /// What a click for the menu would pop up now, for panels that ask for it before.
    virtual void setMenu(std::function<Menu()> menu) = 0;
    /// Where the item is, in pixels of the whole screen; a point without extent where only the last click's
    /// place is known.
    virtual std::optional<Rect> frame() const = 0;
    /// Whether there is a panel for it to stand in.
    virtual bool hasPanel() const = 0;
    /// `handler` is called whenever that has changed.
    virtual Subscription addPanelObserver(std::function<void()> handler) = 0;
    /// Opens a menu at the item. It closes by itself; a second one takes the place of the first.
    virtual void popUpMenu(const Menu& menu) = 0;
};

class StatusBar {
public:
    virtual ~StatusBar() = default;

    /// A status item that is as wide as its image. It shows as soon as there is a panel to show it.
    virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

} // namespace Platform
