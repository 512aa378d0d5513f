#pragma once

#include "core/ReadinessChecklist.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace CurtainCore {

/// One page of the first-run wizard. Permission pages carry the kind of permission and compare by it too.
class OnboardingStep {
public:
    enum class Page { permission, welcome, compatibility, summary };

    static constexpr OnboardingStep permission(PermissionKind kind) { return {Page::permission, kind}; }
    static constexpr OnboardingStep welcome() { return {Page::welcome, std::nullopt}; }
    static constexpr OnboardingStep compatibility() { return {Page::compatibility, std::nullopt}; }
    static constexpr OnboardingStep summary() { return {Page::summary, std::nullopt}; }

    constexpr Page page() const { return page_; }
    /// Present exactly on permission pages.
    constexpr std::optional<PermissionKind> permissionKind() const { return permissionKind_; }

    bool operator==(const OnboardingStep&) const = default;

private:
    constexpr OnboardingStep(Page page, std::optional<PermissionKind> permissionKind)
        : page_(page),
          permissionKind_(permissionKind) {}

    Page page_;
    std::optional<PermissionKind> permissionKind_;
};

/// The wizard's pages and a cursor that only moves forward and stays on the last one.
class OnboardingFlow {
public:
    struct Progress {
        std::size_t index = 0;
        std::size_t total = 0;

        bool operator==(const Progress&) const = default;
    };

    /// The order in which the wizard asks for permissions.
    static constexpr std::array permissionOrder{PermissionKind::desktop, PermissionKind::microphone,
                                                PermissionKind::camera};

    /// A step that is none of the wizard's pages is kept, but leads nowhere.
    explicit OnboardingFlow(OnboardingStep startAt);

    const OnboardingStep& step() const { return step_; }
    const std::vector<OnboardingStep>& steps() const { return steps_; }

    void advance();
    /// Whether `advance` would move.
    bool hasNext() const;
    /// The position of the current step; 0 for one that is none of the wizard's pages.
    Progress progress() const;

    bool operator==(const OnboardingFlow&) const = default;

private:
    std::optional<std::size_t> index() const;

    OnboardingStep step_;
    std::vector<OnboardingStep> steps_;
};

} // namespace CurtainCore
