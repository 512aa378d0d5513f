#include "platform/linux/shield/X11AppShield.h"

#include <QMetaObject>
#include <QThread>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

/// Where the covers live: made, used and destroyed there.
class X11AppShield::Thread {
public:
    explicit Thread(X11Covers::Ask ask) {
        thread_.setObjectName("shield");
        inThread_.moveToThread(&thread_);
        QObject::connect(
            &thread_, &QThread::finished, &inThread_, [this] { covers_.reset(); }, Qt::DirectConnection);
        thread_.start();
        QMetaObject::invokeMethod(&inThread_,
                                  [this, asking = std::move(ask)] { covers_ = X11Covers::open(asking); });
    }
    ~Thread() {
        thread_.quit();
        thread_.wait();
    }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Calls it there with the covers, unless the display cannot be reached.
    template <class Use>
    void use(Use action) {
        QMetaObject::invokeMethod(&inThread_, [this, action = std::move(action)] {
            if (covers_) {
                action(*covers_);
            }
        });
    }

private:
    QThread thread_;
    QObject inThread_;
    std::unique_ptr<X11Covers> covers_;
};

X11AppShield::X11AppShield(Apps apps, Platform::MainQueue& mainQueue)
    : apps_(std::move(apps)),
      mainQueue_(mainQueue) {
    mainQueue_.async(lifetime_.weak([this] { getReady(); }));
}

X11AppShield::~X11AppShield() = default;

void X11AppShield::cover(const std::vector<std::string>& bundleIDs) {
    const bool wasOn = !std::exchange(covered_, bundleIDs).empty();
    if (wasOn && covered_.empty()) {
        // All covers go with their connection.
        thread_.reset();
    }
    getReady();
    if (covered_.empty()) {
        return;
    }
    if (wasOn) {
        thread_->use([](X11Covers& covers) { covers.askAnew(); });
    } else {
        thread_->use([windows = knownWindows()](X11Covers& covers) { covers.begin(windows); });
    }
}

void X11AppShield::getReady() {
    if (thread_) {
        return;
    }
    const auto judging = lifetime_.weak([this](const auto& questions) { judge(questions); });
    thread_ =
        std::make_unique<Thread>([&queue = mainQueue_, judging](std::vector<X11Covers::Question> questions) {
            queue.async([judging, asked = std::move(questions)] { judging(asked); });
        });
}

std::vector<xcb_window_t> X11AppShield::knownWindows() const {
    std::vector<xcb_window_t> windows;
    for (const auto& bundleID : covered_) {
        for (const auto window : apps_.windowsOf(bundleID)) {
            windows.push_back(static_cast<xcb_window_t>(window));
        }
    }
    return windows;
}

void X11AppShield::judge(const std::vector<X11Covers::Question>& questions) {
    std::vector<X11Covers::Answer> answers;
    for (const auto& question : questions) {
        const auto app = apps_.identify(question.window, question.hints);
        answers.push_back(
            {question.number, question.window, app && std::ranges::find(covered_, *app) != covered_.end()});
    }
    thread_->use([answers = std::move(answers)](X11Covers& covers) { covers.take(answers); });
}

} // namespace LinuxPlatform
