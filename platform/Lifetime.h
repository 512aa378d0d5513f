#pragma once

#include <memory>
#include <utility>

namespace Platform {

/// A member of an object that hands out callbacks holding the object weakly: once the object is gone, they do
/// nothing. Single thread: callbacks run on the thread that destroys the object.
class Lifetime {
public:
    template <class Callback>
    auto weak(Callback callback) const {
        return
            [alive = std::weak_ptr<const int>(token_), callback = std::move(callback)](auto&&... arguments) {
                if (!alive.expired()) {
                    callback(std::forward<decltype(arguments)>(arguments)...);
                }
            };
    }

private:
    std::shared_ptr<const int> token_ = std::make_shared<const int>(0);
};

} // namespace Platform
