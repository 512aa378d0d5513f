#include "platform/linux/windows/i3/I3TreeWatch.h"

#include <QJsonObject>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Whether the layout may be another one after this. Titles, urgency and marks change often.
bool changesLayout(const QByteArray& payload) {
    static constexpr std::array<std::string_view, 3> others{"title", "urgent", "mark"};
    const auto change = jsonOf(payload).object().value(QLatin1String("change")).toString().toStdString();
    return std::ranges::find(others, change) == others.end();
}

} // namespace

I3TreeWatch::I3TreeWatch(const std::filesystem::path& socket, Platform::MainQueue& queue, TreeHandler onTree)
    : queue_(queue),
      onTree_(std::move(onTree)),
      silentSince_(queue.now()),
      connection_(socket, queue, {"window", "workspace"},
                  {[this] { look(); }, [this] { noteLoss(); },
                   [this](I3Event event, const QByteArray& payload) { handleEvent(event, payload); }}) {}

void I3TreeWatch::open(std::chrono::milliseconds patience) {
    connection_.open();
    connection_.finish(patience);
}

void I3TreeWatch::look() {
    if (!connection_.isConnected()) {
        return;
    }
    if (isAwaited_) {
        // Several large ones on their way would be too much for sway.
        isLookDue_ = true;
        return;
    }
    isAwaited_ = true;
    isStale_ = false;
    connection_.ask(I3Request::getTree, {}, [this](const QByteArray& reply) {
        isAwaited_ = false;
        if (std::exchange(isLookDue_, false)) {
            look();
        } else {
            takeIn(reply);
        }
    });
}

void I3TreeWatch::lookAgain() {
    if (isAwaited_) {
        isStale_ = true;
    } else {
        look();
    }
}

void I3TreeWatch::command(const std::string& commands, I3Connection::Reply reply) {
    connection_.ask(I3Request::runCommand, QByteArray::fromStdString(commands), std::move(reply));
    look();
}

void I3TreeWatch::handleEvent(I3Event event, const QByteArray& payload) {
    if ((event == I3Event::workspace || event == I3Event::window) && changesLayout(payload)) {
        lookAgain();
    }
}

void I3TreeWatch::noteLoss() {
    noteSilence();
    isAwaited_ = false;
    isStale_ = false;
    isLookDue_ = false;
}

void I3TreeWatch::noteSilence() {
    if (std::exchange(hasAnswered_, false)) {
        silentSince_ = queue_.now();
    }
}

void I3TreeWatch::takeIn(const QByteArray& reply) {
    if (auto tree = I3Tree::parse(reply)) {
        hasAnswered_ = true;
        onTree_(std::move(tree));
    } else {
        noteSilence();
    }
    if (isStale_) {
        look();
    }
}

} // namespace LinuxPlatform
