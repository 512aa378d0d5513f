#pragma once

#include "platform/Geometry.h"
#include "platform/StatusItem.h"
#include "platform/View.h"

#include <functional>

namespace Platform {

/// A light surface that hangs from the status item. It closes only when it is told to. Main thread only.
class Popover {
public:
    virtual ~Popover() = default;

    virtual bool isShown() const = 0;
    /// The view to show next, none when it has no source; the one before it is let go.
    virtual void setContent(View content) = 0;
    virtual void setContentSize(const Size& size) = 0;
    /// Shows the popover beside the item and gives it the keyboard.
    virtual void show(StatusItem& relativeTo) = 0;
    virtual void close() = 0;
    /// `callback` runs after every closing, whoever asked for it.
    virtual void setOnDidClose(std::function<void()> callback) = 0;
};

} // namespace Platform
