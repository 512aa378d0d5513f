#include "platform/linux/ownwindows/SwayWindowManagerClient.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

#include <array>
#include <chrono>
#include <utility>

namespace LinuxPlatform {
namespace {

/// A window that is not in its place so long after it came is to be seen all the same.
constexpr Platform::MainQueue::Seconds placeDeadline{1};
/// One that sway has not told of by then may be there.
constexpr Platform::MainQueue::Seconds appearanceDeadline{3};

QRect rectIn(const QJsonObject& object) {
    const auto rect = object.value(QLatin1String("rect")).toObject();
    const auto number = [&](const char* name) { return rect.value(QLatin1String(name)).toInt(); };
    return {number("x"), number("y"), number("width"), number("height")};
}

/// What a workspace leaves of its output along the edges.
std::vector<QRect> edgesBeside(const QRect& workspace, const QRect& output) {
    const std::array edges{
        QRect(output.topLeft(), QPoint(output.right(), workspace.top() - 1)),
        QRect(QPoint(output.left(), workspace.bottom() + 1), output.bottomRight()),
        QRect(QPoint(output.left(), workspace.top()), QPoint(workspace.left() - 1, workspace.bottom())),
        QRect(QPoint(workspace.right() + 1, workspace.top()), QPoint(output.right(), workspace.bottom()))};
    std::vector<QRect> result;
    for (const auto& edge : edges) {
        if (edge.isValid()) {
            result.push_back(edge);
        }
    }
    return result;
}

std::vector<QRect> panelsIn(const QByteArray& outputs, const QByteArray& workspaces) {
    QMap<QString, QRect> outputRects;
    const auto allOutputs = jsonOf(outputs).array();
    for (const auto& output : allOutputs) {
        const auto object = output.toObject();
        outputRects.insert(object.value(QLatin1String("name")).toString(), rectIn(object));
    }
    std::vector<QRect> panels;
    const auto allWorkspaces = jsonOf(workspaces).array();
    for (const auto& value : allWorkspaces) {
        const auto workspace = value.toObject();
        const auto output = outputRects.find(workspace.value(QLatin1String("output")).toString());
        if (workspace.value(QLatin1String("visible")).toBool() && output != outputRects.end()) {
            const auto edges = edgesBeside(rectIn(workspace), *output);
            panels.insert(panels.end(), edges.begin(), edges.end());
        }
    }
    return panels;
}

} // namespace

SwayWindowManagerClient::SwayWindowManagerClient(std::filesystem::path socket, Platform::MainQueue& queue,
                                                 std::chrono::milliseconds patience)
    : queue_(queue),
      patience_(patience),
      connection_(std::move(socket), queue, {"window"},
                  {nullptr, nullptr,
                   [this](I3Event event, const QByteArray& payload) { handleEvent(event, payload); }}) {
    connection_.open();
}

std::vector<QRect> SwayWindowManagerClient::panels() {
    connection_.ask(I3Request::getOutputs, {}, [this](const QByteArray& reply) { outputs_ = reply; });
    connection_.ask(I3Request::getWorkspaces, {}, [this](const QByteArray& reply) { workspaces_ = reply; });
    connection_.finish(patience_);
    return panelsIn(outputs_, workspaces_);
}

void SwayWindowManagerClient::place(xcb_window_t window, const QPoint& corner,
                                    std::function<void()> whenThere) {
    due_ = {window, corner, std::move(whenThere)};
    queue_.asyncAfter(connection_.isConnected() ? appearanceDeadline : placeDeadline,
                      lifetime_.weak([this, window] { tell(window); }));
    move(*due_);
}

void SwayWindowManagerClient::move(const Placement& placement) {
    const auto command = QStringLiteral("[id=%1] move absolute position %2 px %3 px")
                             .arg(placement.window)
                             .arg(placement.corner.x())
                             .arg(placement.corner.y());
    connection_.ask(I3Request::runCommand, command.toUtf8(),
                    [this, window = placement.window](const QByteArray& reply) {
                        // It is refused as long as sway does not show the window.
                        if (refusalsIn(reply).empty()) {
                            tell(window);
                            forget(window);
                        }
                    });
}

void SwayWindowManagerClient::tell(xcb_window_t window) {
    if (due_ && due_->window == window && due_->whenThere) {
        std::exchange(due_->whenThere, nullptr)();
    }
}

void SwayWindowManagerClient::forget(xcb_window_t window) {
    if (due_ && due_->window == window) {
        due_.reset();
    }
}

void SwayWindowManagerClient::handleEvent(I3Event event, const QByteArray& payload) {
    const auto news = jsonOf(payload).object();
    const auto window = news.value(QLatin1String("container")).toObject().value(QLatin1String("window"));
    const bool isNew = news.value(QLatin1String("change")).toString() == QLatin1String("new");
    if (event == I3Event::window && isNew && due_ && window.toInteger() == due_->window) {
        queue_.asyncAfter(placeDeadline, lifetime_.weak([this, id = due_->window] { tell(id); }));
        move(*due_);
    }
}

} // namespace LinuxPlatform
