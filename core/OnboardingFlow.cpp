#include "core/OnboardingFlow.h"

#include <algorithm>

namespace CurtainCore {

OnboardingFlow::OnboardingFlow(OnboardingStep startAt) : step_(startAt) {
    steps_.push_back(OnboardingStep::welcome());
    steps_.push_back(OnboardingStep::compatibility());
    for (const auto kind : permissionOrder) {
        steps_.push_back(OnboardingStep::permission(kind));
    }
    steps_.push_back(OnboardingStep::summary());
}

void OnboardingFlow::advance() {
    if (hasNext()) {
        step_ = steps_[*index() + 1];
    }
}

bool OnboardingFlow::hasNext() const {
    const auto current = index();
    return current && *current + 1 < steps_.size();
}

OnboardingFlow::Progress OnboardingFlow::progress() const {
    return {index().value_or(0), steps_.size()};
}

std::optional<std::size_t> OnboardingFlow::index() const {
    const auto found = std::ranges::find(steps_, step_);
    if (found == steps_.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - steps_.begin());
}

} // namespace CurtainCore
