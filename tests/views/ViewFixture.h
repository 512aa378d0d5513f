#pragma once

#include "platform/qt/views/ViewEngine.h"
#include "tests/views/Rest.h"
#include "tests/views/ViewCheck.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gmock/gmock.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// The warnings of Qt and QML since the last time they were taken.
std::vector<std::string> takeWarnings();

/// The languages of the interface; with PSEUDO_LANGUAGE those whose texts PseudoLanguage.cpp gives.
inline const std::vector<std::string>& languages() {
#ifdef PSEUDO_LANGUAGE
    static const std::vector<std::string> all{"en", "ar"};
#else
    static const std::vector<std::string> all{"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"};
#endif
    return all;
}

/// Whether what appears or changes does so at once, for those whom only the outcome concerns.
enum class Motion { full, reduced };

/// A view in a window of its own, off screen. Pictures go to the folder CURTAIN_SCREENS where that is set.
class ShownView {
public:
    ShownView(Platform::View view, const QSize& size, Motion motion = Motion::full) : view_(std::move(view)) {
        engine_.style().setAppearance({.isMotionReduced = motion == Motion::reduced});
        item_ = engine_.makeItem(view_);
        window_.setColor(QColor(0xF4, 0xF5, 0xF8));
        window_.resize(size);
        item_->setParentItem(window_.contentItem());
        item_->setSize(size);
        item_->setFocus(true);
        window_.show();
        window_.requestActivate();
        waitFor([this] { return window_.isExposed() && window_.isActive(); });
        settle();
    }

    QQuickWindow& window() { return window_; }
    QQuickItem& root() { return *item_; }
    QtPlatform::ViewEngine& engine() { return engine_; }

    /// Returns whether `condition` came to hold before the deadline.
    static bool waitFor(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, deadline);
    }

    /// Lets layouts, pictures and animations come to rest.
    void settle() { comeToRest(window_); }

    /// The first shown item with this object name; null for none.
    QQuickItem* find(const QString& objectName) { return findIn(*window_.contentItem(), objectName); }

    /// Its place in the window.
    QRectF place(const QString& objectName) {
        auto* const item = find(objectName);
        return item == nullptr ? QRectF() : item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    }

    std::vector<QString> texts() {
        std::vector<QString> found;
        for (const auto& text : paintedTexts(*window_.contentItem())) {
            found.push_back(text.text);
        }
        return found;
    }

    /// Where a text stands; empty when it cannot be seen.
    QRectF placeOfText(const QString& text) {
        for (const auto& painted : paintedTexts(*window_.contentItem())) {
            if (painted.text == text) {
                return painted.bounds;
            }
        }
        return {};
    }

    void clickAt(const QPointF& point) {
        QTest::mouseClick(&window_, Qt::LeftButton, Qt::NoModifier, point.toPoint());
        settle();
    }

    void click(const QString& objectName) {
        const auto area = place(objectName);
        ASSERT_FALSE(area.isEmpty()) << objectName.toStdString() << " cannot be seen";
        clickAt(area.center());
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&window_, static_cast<Qt::Key>(key), modifiers);
        settle();
    }

    /// Presses a key, and lets it go after it has repeated itself a few times.
    void hold(int key) {
        const auto send = [&](QEvent::Type type, bool isRepeat) {
            QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeat);
            QCoreApplication::sendEvent(&window_, &event);
        };
        send(QEvent::KeyPress, false);
        for (int repeats = 0; repeats < 3; ++repeats) {
            send(QEvent::KeyRelease, true);
            send(QEvent::KeyPress, true);
            settle();
        }
        send(QEvent::KeyRelease, false);
        settle();
    }

    void type(const QString& text) {
        for (const auto letter : text) {
            QTest::keyClick(&window_, letter.toLatin1());
        }
        settle();
    }

    QImage picture(const std::string& name) {
        const auto image = window_.grabWindow();
        const auto folder = qEnvironmentVariable("CURTAIN_SCREENS");
        if (!folder.isEmpty()) {
            QDir().mkpath(folder);
            const auto scale = QString::number(window_.effectiveDevicePixelRatio());
            image.save(folder + '/' + QString::fromStdString(name) + '@' + scale + "x.png");
        }
        return image;
    }

    std::vector<std::string> problems(bool isRightToLeft) {
        auto all = textProblems(*window_.contentItem(), isRightToLeft);
        for (auto& problem : accessibilityProblems(*window_.contentItem())) {
            all.push_back(std::move(problem));
        }
        return all;
    }

private:
    static constexpr int deadline = 20000;

    static QQuickItem* findIn(QQuickItem& item, const QString& objectName) {
        if (!item.isVisible()) {
            return nullptr;
        }
        if (item.objectName() == objectName) {
            return &item;
        }
        for (auto* const child : item.childItems()) {
            if (auto* const found = findIn(*child, objectName)) {
                return found;
            }
        }
        return nullptr;
    }

    Platform::View view_;
    QtPlatform::ViewEngine engine_;
    QQuickWindow window_;
    std::unique_ptr<QQuickItem> item_;
};

/// Fails a test that leaves a warning of Qt or QML behind.
class ViewTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_THAT(takeWarnings(), testing::IsEmpty()); }
};

} // namespace TestSupport
