#include "platform/qt/ForeignFileMessages.h"

#include "tests/support/ProgramArguments.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QDirIterator>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QMessageLogger>

#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using QtPlatform::ForeignFileMessages;
using testing::ElementsAre;
using testing::IsEmpty;

/// What is written to the process's standard error while it lives, by whomever.
class StandardError {
public:
    StandardError() {
        const int file = open((folder_.path() / "lines").c_str(), O_RDWR | O_CREAT, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~StandardError() {
        dup2(original_, STDERR_FILENO);
        close(original_);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    std::string text() const { return TestSupport::readFile(folder_.path() / "lines"); }

private:
    TestSupport::TemporaryFolder folder_;
    int original_ = dup(STDERR_FILENO);
};

std::vector<std::string>& seen() {
    static std::vector<std::string> all;
    return all;
}

void keep(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    seen().push_back(message.toStdString());
}

struct ForeignFileMessagesTest : testing::Test {
    ForeignFileMessagesTest() { seen().clear(); }
    ~ForeignFileMessagesTest() override { qInstallMessageHandler(before); }

    static void say(const char* category, const char* message) {
        QMessageLogger(nullptr, 0, nullptr, category).warning("%s", message);
    }

    TestSupport::TemporaryFolder runtimeFolder;
    bool isOffscreen =
        qputenv("QT_QPA_PLATFORM", "offscreen") && qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().c_str());
    TestSupport::ProgramArguments arguments;
    QGuiApplication application{arguments.count, arguments.values.data()};
    QtMessageHandler before = qInstallMessageHandler(keep);
};

TEST_F(ForeignFileMessagesTest, NothingIsSaidAboutForeignFiles) {
    const StandardError lines;
    const ForeignFileMessages foreign(false);
    for (const auto* category :
         {"qt.svg", "qt.svg.draw", "qt.gui.imageio", "qt.gui.imageio.jpeg", "qt.gui.icc", "qt.qpa.fonts",
          "qt.text.font.db", "kf.imageformats.plugins.xcf"}) {
        say(category, "faulty");
    }
    qWarning("load glyph failed err=%x face=%p, glyph=%d", 20U, nullptr, 1);
    qWarning("  OpenType support missing for \"%s\", script %d", "Inter", 11);
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_EQ(lines.text(), "");
}

TEST_F(ForeignFileMessagesTest, EverythingElseReachesTheHandlerOfBefore) {
    {
        const ForeignFileMessages foreign(true);
        for (const auto* category : {"default", "qml", "qt.svgx", "qt.gui", "qt.text.layout", "qt.qpa.xcb"}) {
            say(category, category);
        }
        QMessageLogger(nullptr, 0, nullptr, "qt.svg").debug("asked for");
        qWarning("no glyph: load glyph failed");
    }
    say("qt.svg", "later");
    EXPECT_THAT(seen(), ElementsAre("default", "qml", "qt.svgx", "qt.gui", "qt.text.layout", "qt.qpa.xcb",
                                    "asked for", "no glyph: load glyph failed", "later"));
}

TEST_F(ForeignFileMessagesTest, EachIsShownOnceInALineWhenAsked) {
    const StandardError lines;
    const ForeignFileMessages foreign(true);
    for (int times = 0; times < 3; ++times) {
        say("qt.svg", "one\n  line");
        say("qt.svg", "another");
    }
    EXPECT_EQ(lines.text(),
              "Curtain: somebody else's file: one line\nCurtain: somebody else's file: another\n");
    EXPECT_THAT(seen(), IsEmpty());
}

TEST_F(ForeignFileMessagesTest, OwnPicturesGiveNothingToSay) {
    const StandardError lines;
    int pictures = 0;
    QDirIterator files(QStringLiteral(":/curtain"), {"*.svg", "*.png"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const auto path = files.next();
        EXPECT_FALSE(QIcon(path).pixmap(64, 64).isNull()) << path.toStdString();
        ++pictures;
    }
    EXPECT_GT(pictures, 10);
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_EQ(lines.text(), "");
}

QByteArray png(const QImage& image) {
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return data;
}

QImage coloured(QImage::Format format) {
    QImage image(7, 5, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y,
                           qRgba(x * 30, y * 50, 200 - x * y, format == QImage::Format_RGB32 ? 255 : 40 * y));
        }
    }
    return image.convertToFormat(format);
}

TEST_F(ForeignFileMessagesTest, PngPicturesLookAsTheyAre) {
    const ForeignFileMessages foreign(false);
    for (const auto format : {QImage::Format_ARGB32, QImage::Format_RGB32, QImage::Format_Indexed8,
                              QImage::Format_Grayscale8, QImage::Format_Mono, QImage::Format_RGBA64}) {
        const auto original = coloured(format);
        auto data = png(original);
        QBuffer buffer(&data);
        QImageReader reader(&buffer);
        EXPECT_EQ(reader.size(), original.size()) << format;
        const auto picture = reader.read();
        EXPECT_EQ(picture.convertToFormat(QImage::Format_ARGB32),
                  original.convertToFormat(QImage::Format_ARGB32))
            << format;
        EXPECT_EQ(picture.hasAlphaChannel(), original.hasAlphaChannel()) << format;
    }
}

TEST_F(ForeignFileMessagesTest, FaultyPngPicturesAreNoneAndNobodySaysSo) {
    const StandardError lines;
    const ForeignFileMessages foreign(false);
    const auto whole = png(coloured(QImage::Format_ARGB32));
    for (int length = 0; length < whole.size() - 12; ++length) {
        EXPECT_TRUE(QImage::fromData(whole.left(length)).isNull()) << length << " of " << whole.size();
    }
    for (int place = 0; place < whole.size() - 12; ++place) {
        auto faulty = whole;
        faulty[place] = static_cast<char>(~faulty[place]);
        // Some bytes matter to nobody.
        (void)QImage::fromData(faulty);
    }
    const auto path = runtimeFolder.path() / "garbage.png";
    TestSupport::writeFile(path, "garbage");
    EXPECT_TRUE(QImage(QString::fromStdString(path.string())).isNull());
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_EQ(lines.text(), "");
}

TEST_F(ForeignFileMessagesTest, OtherPicturesWithTheNameOfAPngAreStillRead) {
    const ForeignFileMessages foreign(false);
    const auto path = QString::fromStdString((runtimeFolder.path() / "picture.png").string());
    ASSERT_TRUE(coloured(QImage::Format_RGB32).save(path, "bmp"));
    EXPECT_EQ(QImage(path).size(), QSize(7, 5));
}

} // namespace
