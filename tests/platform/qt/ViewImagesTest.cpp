#include "platform/qt/views/ViewImages.h"

#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QQuickImageResponse>
#include <QThread>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <semaphore>

namespace {

using TestSupport::spinUntil;

constexpr std::chrono::seconds patience{30};

/// Draws when it is let, on whatever thread it is asked.
class SlowDrawing {
public:
    QtPlatform::IconImages::Render render() const {
        return [state = state_](const auto& /*image*/, const QColor& /*color*/, int size) {
            state->isOnMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            state->hasBegun = true;
            if (!state->isOnMainThread) {
                state->mayEnd.acquire();
            }
            QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::red);
            return image;
        };
    }

    bool hasBegun() const { return state_->hasBegun; }
    bool isOnMainThread() const { return state_->isOnMainThread; }
    void finish() { state_->mayEnd.release(); }

private:
    struct State {
        std::atomic<bool> hasBegun = false;
        std::atomic<bool> isOnMainThread = false;
        std::binary_semaphore mayEnd{0};
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

struct IconImagesTest : testing::Test {
    SlowDrawing drawing;
    std::optional<QtPlatform::IconImages> images{drawing.render()};
    bool isFinished = false;

    std::unique_ptr<QQuickImageResponse> request(const QString& source) {
        std::unique_ptr<QQuickImageResponse> response(images->requestImageResponse(source, {16, 16}));
        QObject::connect(response.get(), &QQuickImageResponse::finished, [this] { isFinished = true; });
        return response;
    }
};

TEST_F(IconImagesTest, AFileThatTakesItsTimeHoldsNobodyUp) {
    const auto response = request(QStringLiteral("/opt/strange.svg"));
    ASSERT_TRUE(spinUntil([&] { return drawing.hasBegun(); }, patience));
    EXPECT_FALSE(drawing.isOnMainThread());
    EXPECT_FALSE(isFinished);
    drawing.finish();
    ASSERT_TRUE(spinUntil([&] { return isFinished; }, patience));
    const std::unique_ptr<QQuickTextureFactory> picture(response->textureFactory());
    EXPECT_EQ(picture->image().pixelColor(8, 8), QColor(Qt::red));
}

TEST_F(IconImagesTest, ThemesAreAskedOnTheMainThread) {
    const auto response = request(QStringLiteral("firefox"));
    EXPECT_FALSE(drawing.hasBegun());
    ASSERT_TRUE(spinUntil([&] { return isFinished; }, patience));
    EXPECT_TRUE(drawing.isOnMainThread());
}

TEST_F(IconImagesTest, TheEndDoesNotWaitForAFileThatIsNeverRead) {
    auto first = request(QStringLiteral("/opt/strange.svg"));
    const auto second = request(QStringLiteral("/opt/other.svg"));
    ASSERT_TRUE(spinUntil([&] { return drawing.hasBegun(); }, patience));
    first.reset();
    images.reset();
    EXPECT_FALSE(isFinished);
    drawing.finish();
}

} // namespace
