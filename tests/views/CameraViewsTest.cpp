#include "Curtain/CameraPreviewManager.h"
#include "platform/qt/items/PictureFit.h"
#include "platform/qt/views/ViewEngine.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/views/Rest.h"

#include <QImage>
#include <QQuickItem>
#include <QQuickView>
#include <QRunnable>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

namespace {

using Curtain::CameraPreviewManager;
using testing::Pair;
using TestSupport::comeToRest;
using TestSupport::plainPicture;
using TestSupport::spinUntil;

constexpr QRgb dark = 0xFF20242E;
constexpr QRgb red = 0xFFFF0000;
constexpr QRgb green = 0xFF00FF00;
constexpr QRgb blue = 0xFF0000FF;
constexpr QRgb gray = 0xFF808080;

/// Four upright bars: red, green, blue, gray.
std::shared_ptr<const Platform::Picture> bars(int width, int height) {
    auto picture = std::make_shared<Platform::Picture>(*plainPicture(width, height, 0, 0, 0));
    constexpr std::array colors{red, green, blue, gray};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto color = colors[static_cast<std::size_t>(x * 4 / width)];
            auto* pixel = &picture->pixels[static_cast<std::size_t>(y * width + x) * 4];
            pixel[0] = static_cast<std::byte>(qBlue(color));
            pixel[1] = static_cast<std::byte>(qGreen(color));
            pixel[2] = static_cast<std::byte>(qRed(color));
        }
    }
    return picture;
}

struct CameraViewsTest : testing::Test {
    TestSupport::FakeCaptureServices capture;
    TestSupport::FakeMediaAuthorization authorization;
    TestSupport::HandDrivenQueue mainQueue;
    TestSupport::HandDrivenWorkQueues workQueues;
    CameraPreviewManager manager{{capture, authorization, mainQueue, workQueues}};
    QtPlatform::ViewEngine engine;
    QQuickView view{&engine.engine(), nullptr};
    /// Counted on the thread that paints.
    std::atomic<int> paints = 0;

    CameraViewsTest() {
        capture.cameras = {{"front", "Front Camera"}};
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        QObject::connect(&view, &QQuickWindow::frameSwapped, [this] { ++paints; });
    }

    void show(const char* component, int width, int height) {
        view.setInitialProperties({{"camera", QVariant::fromValue<QObject*>(&manager)}});
        view.setSource(QUrl(component));
        ASSERT_EQ(view.status(), QQuickView::Ready);
        view.resize(width, height);
        view.show();
        ASSERT_TRUE(spinUntil([&] { return view.isExposed() && paints > 0; }));
    }
    void showPreview(int width, int height) { show("qrc:/Curtain/CameraPreviewView.qml", width, height); }
    void showPhoto(int width, int height) { show("qrc:/Curtain/PhotoView.qml", width, height); }

    /// How often was painted, once nothing of that is under way any more: the last time is for this question,
    /// and whatever began earlier is done when that begins.
    int paintsAtRest() {
        EXPECT_TRUE(comeToRest(view));
        const auto earlier = std::make_shared<std::atomic<int>>(-1);
        view.scheduleRenderJob(QRunnable::create([this, earlier] { *earlier = paints.load(); }),
                               QQuickWindow::BeforeSynchronizingStage);
        view.update();
        EXPECT_TRUE(spinUntil([&] { return *earlier >= 0 && paints > *earlier; }));
        return paints;
    }

    QRgb pixel(int x, int y) {
        const auto ratio = view.effectiveDevicePixelRatio();
        return view.grabWindow().pixel(static_cast<int>(x * ratio), static_cast<int>(y * ratio));
    }

    void takePhoto(std::shared_ptr<const Platform::Picture> picture) {
        manager.start(std::nullopt);
        workQueues.runAll();
        capture.decodedImage = std::move(picture);
        manager.capture();
        capture.photoOutput->finish(capture.image);
        mainQueue.runReady();
    }
};

TEST_F(CameraViewsTest, PreviewIsDarkWithoutAPicture) {
    showPreview(160, 90);
    EXPECT_EQ(pixel(80, 45), dark);
}

TEST_F(CameraViewsTest, PreviewWithoutACameraIsDark) {
    view.setSource(QUrl("qrc:/Curtain/CameraPreviewView.qml"));
    view.resize(160, 90);
    view.show();
    ASSERT_TRUE(spinUntil([&] { return view.isExposed(); }));
    EXPECT_EQ(pixel(80, 45), dark);
}

TEST_F(CameraViewsTest, PreviewShowsTheNewestPicture) {
    showPreview(160, 90);
    capture.session->show(plainPicture(320, 180, 255, 0, 0));
    capture.session->show(bars(320, 180));
    EXPECT_EQ(pixel(20, 45), red);
    EXPECT_EQ(pixel(60, 45), green);
    EXPECT_EQ(pixel(100, 45), blue);
    EXPECT_EQ(pixel(140, 45), gray);
    capture.session->show(nullptr);
    EXPECT_EQ(pixel(80, 45), dark);
}

TEST_F(CameraViewsTest, WidePictureFillsASquareAndLosesItsSides) {
    showPreview(100, 100);
    capture.session->show(bars(400, 100));
    // The middle quarter of the picture: half of green, half of blue.
    EXPECT_EQ(pixel(1, 1), green);
    EXPECT_EQ(pixel(45, 98), green);
    EXPECT_EQ(pixel(55, 1), blue);
    EXPECT_EQ(pixel(98, 98), blue);
}

TEST_F(CameraViewsTest, TallPictureFillsAndLosesTopAndBottom) {
    showPreview(160, 90);
    auto picture = std::make_shared<Platform::Picture>(*plainPicture(160, 270, 0, 0, 255));
    // The middle third is green.
    for (std::size_t at = std::size_t{160} * 90; at < std::size_t{160} * 180; ++at) {
        picture->pixels[at * 4] = std::byte{0};
        picture->pixels[at * 4 + 1] = std::byte{255};
    }
    capture.session->show(picture);
    EXPECT_EQ(pixel(1, 2), green);
    EXPECT_EQ(pixel(158, 87), green);
}

TEST_F(CameraViewsTest, SmallPictureIsEnlargedToFill) {
    showPreview(160, 90);
    capture.session->show(plainPicture(16, 9, 255, 0, 0));
    EXPECT_EQ(pixel(1, 1), red);
    EXPECT_EQ(pixel(158, 88), red);
}

TEST_F(CameraViewsTest, MirroredPreviewIsFlippedAndBackAgain) {
    showPreview(160, 90);
    capture.session->show(bars(320, 180));
    view.rootObject()->setProperty("mirrored", true);
    EXPECT_EQ(pixel(20, 45), gray);
    EXPECT_EQ(pixel(60, 45), blue);
    EXPECT_EQ(pixel(100, 45), green);
    EXPECT_EQ(pixel(140, 45), red);
    view.rootObject()->setProperty("mirrored", false);
    EXPECT_EQ(pixel(20, 45), red);
}

TEST_F(CameraViewsTest, NoOtherThreadIsWokenToPaintAPicture) {
    showPreview(332, 186);
    view.rootObject()->setProperty("mirrored", true);
    for (int picture = 0; picture < 3; ++picture) {
        const int before = paints;
        capture.session->show(bars(320 + picture, 180));
        EXPECT_TRUE(spinUntil([&] { return paints > before; }));
    }
    EXPECT_EQ(TestSupport::paintingHelpers(), 0);
}

TEST_F(CameraViewsTest, NoOtherThreadIsWokenToPaintAFrame) {
    show("qrc:/tests/Frame.qml", 332, 186);
    for (int width = 333; width < 336; ++width) {
        const int before = paints;
        view.resize(width, 186);
        EXPECT_TRUE(spinUntil([&] { return paints > before; }));
    }
    EXPECT_EQ(TestSupport::paintingHelpers(), 0);
}

TEST_F(CameraViewsTest, PreviewAsksForAsManyPixelsAsItHas) {
    showPreview(160, 90);
    EXPECT_THAT(capture.session->previewSize(), Pair(160, 90));
    view.resize(200, 100);
    EXPECT_TRUE(spinUntil([&] { return capture.session->previewSize() == std::pair(200, 100); }));
}

TEST_F(CameraViewsTest, PreviewThatCannotBeSeenAsksForNothing) {
    showPreview(160, 90);
    view.rootObject()->setVisible(false);
    EXPECT_THAT(capture.session->previewSize(), Pair(0, 0));
    view.rootObject()->setVisible(true);
    EXPECT_THAT(capture.session->previewSize(), Pair(160, 90));
    view.hide();
    EXPECT_THAT(capture.session->previewSize(), Pair(0, 0));
    view.show();
    EXPECT_THAT(capture.session->previewSize(), Pair(160, 90));
    view.setSource(QUrl());
    EXPECT_THAT(capture.session->previewSize(), Pair(0, 0));
}

TEST_F(CameraViewsTest, OldPictureIsGoneWhenThePreviewIsShownAgain) {
    showPreview(160, 90);
    capture.session->show(plainPicture(160, 90, 255, 0, 0));
    EXPECT_EQ(pixel(80, 45), red);
    view.hide();
    capture.session->show(nullptr);
    view.show();
    ASSERT_TRUE(spinUntil([&] { return view.isExposed(); }));
    EXPECT_EQ(pixel(80, 45), dark);
}

TEST_F(CameraViewsTest, NothingIsPaintedUnlessAPictureCame) {
    showPreview(160, 90);
    capture.session->show(plainPicture(160, 90, 255, 0, 0));
    const int before = paintsAtRest();
    // The manager's other news are none for the preview.
    manager.setMirrored(true);
    manager.setMirrored(false);
    const int between = paintsAtRest();
    EXPECT_EQ(between, before + 1) << "for the question";
    capture.session->show(plainPicture(160, 90, 0, 255, 0));
    EXPECT_TRUE(spinUntil([&] { return paints > between; }));
    EXPECT_EQ(paintsAtRest(), between + 2) << "for the picture and the question";
}

TEST_F(CameraViewsTest, MoreThanOnePreviewMayShowTheSession) {
    showPreview(160, 90);
    const auto other = capture.session->makePreview([] {});
    other->setSize(10, 10);
    capture.session->show(plainPicture(160, 90, 255, 0, 0));
    EXPECT_EQ(pixel(80, 45), red);
}

TEST_F(CameraViewsTest, PhotoIsScaledToFitAndNeverMirrored) {
    showPhoto(100, 100);
    EXPECT_EQ(pixel(50, 50), pixel(1, 1)) << "no photo yet";
    manager.setMirrored(true);
    takePhoto(bars(400, 200));
    EXPECT_EQ(pixel(12, 50), red);
    EXPECT_EQ(pixel(37, 30), green);
    EXPECT_EQ(pixel(62, 70), blue);
    EXPECT_EQ(pixel(88, 50), gray);
    EXPECT_EQ(pixel(12, 20), pixel(1, 1)) << "above the photo";
    EXPECT_EQ(pixel(12, 80), pixel(1, 1)) << "below the photo";
}

TEST_F(CameraViewsTest, PhotoThatIsClearedVanishes) {
    showPhoto(100, 100);
    takePhoto(plainPicture(10, 10, 255, 0, 0));
    EXPECT_EQ(pixel(50, 50), red);
    manager.clearCapturedPhoto();
    EXPECT_NE(pixel(50, 50), red);
}

TEST(PictureFitTest, APictureOfTheRightSizeStaysAsItIs) {
    const auto image = QtPlatform::fitted(*bars(8, 2), {0, 0, 8, 2}, {8, 2}, false);
    const auto mirrored = QtPlatform::fitted(*bars(8, 2), {0, 0, 8, 2}, {8, 2}, true);
    constexpr std::array colors{red, red, green, green, blue, blue, gray, gray};
    for (int x = 0; x < 8; ++x) {
        EXPECT_EQ(image.pixel(x, 1), colors[static_cast<std::size_t>(x)]) << x;
        EXPECT_EQ(mirrored.pixel(7 - x, 0), colors[static_cast<std::size_t>(x)]) << x;
    }
}

TEST(PictureFitTest, NeighboursAreMixedByHowNearTheyAre) {
    // Red and green.
    const auto larger = QtPlatform::fitted(*bars(4, 1), {0, 0, 2, 1}, {4, 3}, false);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(larger.pixel(0, y), red);
        EXPECT_EQ(larger.pixel(1, y), qRgb(191, 63, 0));
        EXPECT_EQ(larger.pixel(2, y), qRgb(63, 191, 0));
        EXPECT_EQ(larger.pixel(3, y), qRgb(0, 191, 63)) << "blue is next to it";
    }
    EXPECT_EQ(QtPlatform::fitted(*bars(4, 1), {0, 0, 2, 1}, {1, 1}, false).pixel(0, 0), qRgb(127, 127, 0));
}

TEST(PictureFitTest, OnlyThePartIsShown) {
    auto picture = *bars(4, 4);
    std::fill_n(picture.pixels.begin() + 2 * 16, 16, std::byte{0xFF});
    const auto image = QtPlatform::fitted(picture, {2, 1, 2, 3}, {2, 3}, false);
    EXPECT_EQ(image.pixel(0, 0), blue);
    EXPECT_EQ(image.pixel(1, 0), gray);
    EXPECT_EQ(image.pixel(0, 1), 0xFFFFFFFF);
    EXPECT_EQ(image.pixel(0, 2), blue);
}

} // namespace
