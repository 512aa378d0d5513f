#pragma once

#include "Curtain/ReadinessCoordinator.h"
#include "Curtain/popover/LiveChecks.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Popover.h"
#include "platform/Screens.h"
#include "platform/StatusItem.h"
#include "platform/Subscription.h"

#include <functional>
#include <memory>

namespace Curtain {

class MeetingReadinessView;
enum class PhotoNews;

/// The popover at the status item, and what goes on while it is open. Main thread only.
class ReadinessPopover {
public:
    /// All of them outlive this object.
    struct Services {
        Platform::Popover& popover;
        Platform::Screens& screens;
        Platform::MainQueue& mainQueue;
        ReadinessCoordinator& coordinator;
        LiveChecks& checks;
    };

    explicit ReadinessPopover(const Services& services) : services_(services) {}
    /// Closes it without a word.
    ~ReadinessPopover();
    ReadinessPopover(const ReadinessPopover&) = delete;
    ReadinessPopover& operator=(const ReadinessPopover&) = delete;

    /// Makes what is shown, anew for every opening.
    std::function<std::shared_ptr<MeetingReadinessView>()> makeView;

    /// To be called before it is first opened.
    void start();
    bool isShown() const { return services_.popover.isShown(); }
    /// `statusItem` outlives it.
    void open(Platform::StatusItem& statusItem);
    /// Gives an open one the keyboard.
    void bringForward(Platform::StatusItem& statusItem) { services_.popover.show(statusItem); }
    void close() { services_.popover.close(); }
    /// An open one shows a view that is made now.
    void renewView();
    /// In the view that is shown.
    void tellOfPhoto(PhotoNews news);

private:
    void showNewView();
    double heightAt(const Platform::StatusItem& statusItem) const;
    void didClose();

    Services services_;
    /// The popover owns it.
    std::weak_ptr<MeetingReadinessView> view_;
    /// While it is open.
    Platform::Subscription liveRefresh_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
