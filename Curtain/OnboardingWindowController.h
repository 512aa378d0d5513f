#pragma once

#include "Curtain/OnboardingViewModel.h"
#include "platform/Application.h"
#include "platform/Windows.h"

#include <memory>

namespace Curtain {

/// The wizard's window. Main thread only.
class OnboardingWindowController {
public:
    /// `windows` and `application` outlive the controller.
    OnboardingWindowController(Platform::Windows& windows, Platform::Application& application,
                               std::shared_ptr<OnboardingViewModel> viewModel);

    const std::shared_ptr<OnboardingViewModel>& viewModel() const { return viewModel_; }

    /// Makes the window the first time, and brings it to the front every time.
    void show();
    void close();
    /// Whether its window is closed and there was no way forward in it.
    bool isOver() const;

private:
    void makeWindow();
    void windowWillClose();

    Platform::Windows& windows_;
    Platform::Application& application_;
    std::shared_ptr<OnboardingViewModel> viewModel_;
    std::unique_ptr<Platform::Window> window_;
};

} // namespace Curtain
