#include "Curtain/OnboardingWindowController.h"

#include <utility>

namespace Curtain {
namespace {

constexpr auto viewAddress = "qrc:/Curtain/OnboardingWizardView.qml";
constexpr Platform::Size contentSize{420, 460};

} // namespace

OnboardingWindowController::OnboardingWindowController(Platform::Windows& windows,
                                                       Platform::Application& application,
                                                       std::shared_ptr<OnboardingViewModel> viewModel)
    : windows_(windows),
      application_(application),
      viewModel_(std::move(viewModel)) {
    viewModel_->onClose = [this] { close(); };
}

void OnboardingWindowController::show() {
    if (!window_) {
        makeWindow();
    }
    const bool wasVisible = window_->isVisible();
    application_.setActivationPolicy(Platform::ActivationPolicy::regular);
    application_.activate(true);
    window_->center();
    window_->makeKeyAndOrderFront();
    window_->orderFrontRegardless();
    if (!wasVisible) {
        viewModel_->windowDidShow();
    }
}

void OnboardingWindowController::close() {
    if (window_) {
        window_->close();
    }
}

bool OnboardingWindowController::isOver() const {
    return window_ && !window_->isVisible() && viewModel_->isCompatibilityKnown() &&
           !viewModel_->isCompatible();
}

void OnboardingWindowController::makeWindow() {
    Platform::WindowStyle style;
    style.isTitleHidden = true;
    style.isMovableByBackground = true;
    window_ = windows_.makeWindow({viewAddress, viewModel_}, contentSize, style);
    // For task lists; the title bar shows none.
    window_->setTitle("Curtain");
    window_->setOnWillClose([this] { windowWillClose(); });
}

void OnboardingWindowController::windowWillClose() {
    viewModel_->windowWillClose();
    application_.setActivationPolicy(Platform::ActivationPolicy::accessory);
}

} // namespace Curtain
