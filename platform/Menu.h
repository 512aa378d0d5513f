#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Platform {

struct MenuItem {
    /// Empty for a separator.
    std::string title;
    /// Called on the main thread when the item is chosen; an item without one is shown disabled.
    std::function<void()> action;

    bool isSeparator() const { return title.empty(); }
};

struct Menu {
    std::vector<MenuItem> items;
    /// Of its titles, such as "hi".
    std::string lang;
    bool isRightToLeft = false;
    /// The address of the description of a view that shows it, for panels that draw none themselves. Its
    /// model has the properties `entries`, `lang` and `isRightToLeft`.
    std::string view;
};

} // namespace Platform
