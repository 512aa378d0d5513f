#pragma once

#include "platform/Subscription.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace Platform {

/// Those who want to be told of something, in the order in which they came. Subscriptions may begin and end
/// while they are being told, and may outlive this object; one that has ended is not told any more. Single
/// thread.
template <class... Arguments>
class Subscribers {
public:
    using Callback = std::function<void(Arguments...)>;

    Subscription add(Callback callback) {
        const auto token = ++lastToken_;
        callbacks_->emplace(token, std::move(callback));
        return Subscription([callbacks = std::weak_ptr(callbacks_), token] {
            if (const auto stillThere = callbacks.lock()) {
                stillThere->erase(token);
            }
        });
    }

    bool isEmpty() const { return callbacks_->empty(); }

    void tell(const Arguments&... arguments) const {
        // Telling may end this object.
        const auto callbacks = callbacks_;
        std::vector<std::uint64_t> tokens;
        tokens.reserve(callbacks->size());
        for (const auto& [token, callback] : *callbacks) {
            tokens.push_back(token);
        }
        for (const auto token : tokens) {
            const auto found = callbacks->find(token);
            if (found != callbacks->end()) {
                // The call may end its own subscription.
                const auto callback = found->second;
                callback(arguments...);
            }
        }
    }

private:
    std::uint64_t lastToken_ = 0;
    std::shared_ptr<std::map<std::uint64_t, Callback>> callbacks_ =
        std::make_shared<std::map<std::uint64_t, Callback>>();
};

} // namespace Platform
