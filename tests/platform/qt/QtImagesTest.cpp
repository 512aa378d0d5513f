#include "platform/qt/QtResources.h"
#include "platform/qt/screens/ImageRendering.h"

#include "tests/support/ProgramArguments.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace {

using Platform::Image;
using QtPlatform::QtResources;
using QtPlatform::renderImage;

const std::vector<int> panelSizes{16, 18, 20, 22, 24, 32, 36, 44, 48, 64};

TEST(QtResources, TheStatusItemsImagesAreThereAsPdf) {
    QtResources resources;
    std::set<std::optional<std::string>> paths;
    for (const auto* name : {"open", "close", "alert"}) {
        const auto path = resources.pathForResource(name, "pdf");
        EXPECT_TRUE(path) << name;
        paths.insert(path);
    }
    EXPECT_EQ(paths.size(), 3U);
}

TEST(QtResources, TheSymbolsAreThere) {
    QtResources resources;
    EXPECT_TRUE(resources.pathForSystemSymbol("eye"));
    EXPECT_TRUE(resources.pathForSystemSymbol("eye.slash"));
    EXPECT_TRUE(resources.pathForSystemSymbol("exclamationmark.triangle"));
}

TEST(QtResources, OthersAreAbsent) {
    QtResources resources;
    for (const auto* name : {"", "Open", "opened", "eye", "open.svg"}) {
        EXPECT_EQ(resources.pathForResource(name, "pdf"), std::nullopt) << name;
    }
    EXPECT_EQ(resources.pathForResource("open", "png"), std::nullopt);
    for (const auto* name : {"", "open", "eye.svg", "Eye", "eye.", "no.such.symbol"}) {
        EXPECT_EQ(resources.pathForSystemSymbol(name), std::nullopt) << name;
    }
}

/// Lets the toolkit do without a display and keep its files to itself.
struct RuntimeFolder : TestSupport::TemporaryFolder {
    RuntimeFolder() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("XDG_RUNTIME_DIR", path().c_str());
    }
};

struct ImageRenderingTest : testing::Test {
    RuntimeFolder folder;
    TestSupport::ProgramArguments arguments;
    QGuiApplication application{arguments.count, arguments.values.data()};

    std::string write(const std::string& file, const std::string& text) const {
        TestSupport::writeFile(folder.path() / file, text);
        return (folder.path() / file).string();
    }

    static Image templateOf(const std::optional<std::string>& path) {
        return {path.value_or("missing"), 0, 0, true, {}};
    }
    static std::vector<Image> builtInImages() {
        QtResources resources;
        return {templateOf(resources.pathForResource("open", "pdf")),
                templateOf(resources.pathForResource("close", "pdf")),
                templateOf(resources.pathForResource("alert", "pdf")),
                templateOf(resources.pathForSystemSymbol("eye")),
                templateOf(resources.pathForSystemSymbol("eye.slash")),
                templateOf(resources.pathForSystemSymbol("exclamationmark.triangle"))};
    }
    static QImage drawn(const Image& image, const QColor& color, int size) {
        return renderImage(image, color, size).convertToFormat(QImage::Format_ARGB32);
    }

    static int strongestAlpha(const QImage& image) {
        int strongest = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                strongest = std::max(strongest, image.pixelColor(x, y).alpha());
            }
        }
        return strongest;
    }

    /// The colours of the pixels that are fully covered.
    static std::set<QRgb> opaqueColors(const QImage& image) {
        std::set<QRgb> colors;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y).alpha() == 255) {
                    colors.insert(image.pixel(x, y));
                }
            }
        }
        return colors;
    }
};

TEST_F(ImageRenderingTest, WhatIsNoFileOrTooLargeForAnIconIsNotRead) {
    const std::string drawing = "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'>"
                                "<rect width='8' height='8' fill='#112233'/></svg>";
    for (const bool isTemplate : {false, true}) {
        const auto isDrawn = [&](const std::string& path) {
            return !renderImage({path, 0, 0, isTemplate, {}}, Qt::black, 22).isNull();
        };
        EXPECT_TRUE(isDrawn(write("drawing.svg", drawing)));
        EXPECT_FALSE(isDrawn(write("huge.svg", drawing + std::string(9 << 20, ' '))));
        // Nobody ever writes to it, so that whoever opens it waits.
        const auto pipe = (folder.path() / "pipe.svg").string();
        ASSERT_TRUE(isTemplate || mkfifo(pipe.c_str(), 0600) == 0);
        EXPECT_FALSE(isDrawn(pipe));
        EXPECT_FALSE(isDrawn("/dev/zero"));
    }
}

TEST_F(ImageRenderingTest, ASmallFileOfAHugePictureIsNotUnpacked) {
    const auto path = folder.path() / "huge.png";
    QImage huge(8192, 8192, QImage::Format_Mono);
    huge.fill(0);
    ASSERT_TRUE(huge.save(QString::fromStdString(path.string())));
    EXPECT_TRUE(renderImage({path.string(), 0, 0, false, {}}, Qt::black, 22).isNull());
    ASSERT_TRUE(huge.copy(0, 0, 64, 32).save(QString::fromStdString(path.string())));
    EXPECT_EQ(renderImage({path.string(), 0, 0, false, {}}, Qt::black, 22).size(), QSize(22, 11));
    EXPECT_EQ(renderImage({path.string(), 0, 0, false, {}}, Qt::black, 128).size(), QSize(64, 32));
}

TEST_F(ImageRenderingTest, ADrawingKeepsItsShape) {
    const auto path = write("wide.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='4'>"
                                        "<rect width='8' height='4' fill='#112233'/></svg>");
    EXPECT_EQ(renderImage({path, 0, 0, false, {}}, Qt::black, 22).size(), QSize(22, 11));
    const auto line = write("line.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='9000' height='1'/>");
    EXPECT_EQ(renderImage({line, 0, 0, false, {}}, Qt::black, 22).size(), QSize(22, 1));
}

int largestDifference(const QImage& one, const QImage& other) {
    int largest = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            largest =
                std::max(largest, std::abs(one.pixelColor(x, y).alpha() - other.pixelColor(x, y).alpha()));
        }
    }
    return largest;
}

TEST_F(ImageRenderingTest, StatusImagesStandOnThePixels) {
    const auto closed = builtInImages().at(1);
    for (const int size : {16, 18, 22, 24, 32, 36, 44, 48}) {
        const auto image = drawn(closed, Qt::black, size);
        // Where folds part, half-way down from the middle.
        std::set<int> alphas;
        for (int x = 0; x < size; ++x) {
            alphas.insert(image.pixelColor(x, size * 3 / 4).alpha());
        }
        EXPECT_THAT(alphas, testing::ElementsAre(0, 255)) << size;
        EXPECT_LE(largestDifference(image, image.mirrored(true, false)), 16) << size << ": arcs are rounded";
    }
}

/// How much of the middle is covered, below the half of an image, from 0 to 1.
double coverOfMiddle(const QImage& image) {
    const int size = image.width();
    double sum = 0;
    int count = 0;
    for (int y = size / 2; y < size * 3 / 4; ++y) {
        for (int x = size * 5 / 16; x < size - size * 5 / 16; ++x) {
            sum += image.pixelColor(x, y).alphaF();
            ++count;
        }
    }
    return sum / count;
}

TEST_F(ImageRenderingTest, TheClosedCurtainIsToldFromTheOpenOneByWhatItCovers) {
    const auto images = builtInImages();
    for (const int size : {16, 18, 22, 24}) {
        EXPECT_LT(coverOfMiddle(drawn(images.at(0), Qt::black, size)), 0.25) << size;
        EXPECT_GT(coverOfMiddle(drawn(images.at(1), Qt::black, size)), 0.5) << size;
    }
}

TEST_F(ImageRenderingTest, ATemplateIsDrawnInTheGivenColor) {
    for (const auto& image : builtInImages()) {
        for (const auto& color : {QColor(0x12, 0x34, 0x56), QColor(Qt::white), QColor(Qt::black)}) {
            for (const int size : {22, 64}) {
                EXPECT_THAT(opaqueColors(drawn(image, color, size)), testing::ElementsAre(color.rgb()))
                    << image.source;
            }
        }
    }
}

TEST_F(ImageRenderingTest, EverySizeOfAPanelIsDrawn) {
    for (const auto& image : builtInImages()) {
        for (const int size : panelSizes) {
            const auto picture = drawn(image, Qt::black, size);
            ASSERT_EQ(picture.size(), QSize(size, size));
            EXPECT_GT(strongestAlpha(picture), 128) << image.source << " " << size;
            EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0) << image.source << " " << size;
        }
    }
}

TEST_F(ImageRenderingTest, ThePicturesDiffer) {
    const auto images = builtInImages();
    for (auto one = images.begin(); one != images.end(); ++one) {
        for (auto other = std::next(one); other != images.end(); ++other) {
            EXPECT_NE(drawn(*one, Qt::black, 22), drawn(*other, Qt::black, 22))
                << one->source << " " << other->source;
        }
    }
}

TEST_F(ImageRenderingTest, OtherPicturesKeepTheirColors) {
    const auto path = write("red.svg", R"(<svg xmlns="http://www.w3.org/2000/svg" width="8" height="8">)"
                                       R"(<rect width="8" height="8" fill="#ff0000"/></svg>)");
    EXPECT_THAT(opaqueColors(drawn({path, 0, 0, false, {}}, Qt::blue, 22)),
                testing::ElementsAre(QColor(Qt::red).rgb()));
}

TEST_F(ImageRenderingTest, ABrokenTemplateGivesNoIcon) {
    for (const auto& path :
         {write("empty.svg", ""), write("text.svg", "no picture"), write("cut.svg", "<svg xmlns="),
          write("binary.svg", std::string("\0\xff\x01", 3)), (folder.path() / "missing.svg").string(),
          folder.path().string(), std::string(":/curtain/missing.svg")}) {
        EXPECT_TRUE(renderImage(templateOf(path), Qt::black, 22).isNull()) << path;
    }
}

TEST_F(ImageRenderingTest, ABrokenPictureGivesNoIcon) {
    for (const auto& path : {write("empty.svg", ""), write("text.svg", "no picture"),
                             write("cut.svg", "<svg xmlns="), write("cut.png", "\x89PNG\r\n"),
                             (folder.path() / "missing.svg").string(), folder.path().string()}) {
        EXPECT_TRUE(renderImage({path, 0, 0, false, {}}, Qt::black, 22).isNull()) << path;
    }
}

TEST_F(ImageRenderingTest, ANameThatNoThemeKnowsGivesNoIcon) {
    for (const auto* iconName : {"", "curtain-no-such-icon"}) {
        EXPECT_TRUE(renderImage({iconName, 0, 0, false, {}}, Qt::black, 22).isNull()) << iconName;
        EXPECT_TRUE(renderImage({iconName, 0, 0, true, {}}, Qt::black, 22).isNull()) << iconName;
    }
}

} // namespace
