#include "platform/qt/ForeignFileMessages.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <QtPlugin>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <set>
#include <string_view>

// Qt's own reader has libpng write its errors to standard error, past every handler of messages.
Q_IMPORT_PLUGIN(PngPlugin)

namespace QtPlatform {
namespace {

/// With the categories below them.
constexpr std::array<std::string_view, 6> foreignCategories{"kf.imageformats", "qt.gui.icc", "qt.gui.imageio",
                                                            "qt.qpa.fonts",    "qt.svg",     "qt.text.font"};
/// Of messages without a category.
constexpr std::array foreignBeginnings{"load glyph failed", "render glyph failed",
                                       "OpenType support missing"};

/// What the handler, a plain function, needs to know.
struct State {
    std::mutex mutex;
    QtMessageHandler previous = nullptr;
    bool areShown = false;
    std::set<QString> shown;
};

State& state() {
    static State state;
    return state;
}

bool isOf(std::string_view category, std::string_view other) {
    return category.starts_with(other) && (category.size() == other.size() || category[other.size()] == '.');
}

bool isForeign(QtMsgType type, std::string_view category, const QString& message) {
    // Somebody has asked for those, and a fatal one is the last.
    if (type == QtDebugMsg || type == QtFatalMsg) {
        return false;
    }
    if (category == "default") {
        return std::ranges::any_of(foreignBeginnings, [&](const char* beginning) {
            return message.trimmed().startsWith(QLatin1String(beginning));
        });
    }
    return std::ranges::any_of(foreignCategories,
                               [&](std::string_view foreign) { return isOf(category, foreign); });
}

void show(const QString& message) {
    const auto line = message.simplified();
    const std::lock_guard lock(state().mutex);
    if (state().areShown && state().shown.insert(line).second) {
        std::fprintf(stderr, "Curtain: somebody else's file: %s\n", qPrintable(line));
    }
}

void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (isForeign(type, context.category != nullptr ? context.category : "default", message)) {
        show(message);
    } else {
        state().previous(type, context, message);
    }
}

} // namespace

ForeignFileMessages::ForeignFileMessages(bool areShown) {
    state().areShown = areShown;
    state().shown.clear();
    state().previous = qInstallMessageHandler(handle);
}

ForeignFileMessages::~ForeignFileMessages() {
    qInstallMessageHandler(state().previous);
}

} // namespace QtPlatform
