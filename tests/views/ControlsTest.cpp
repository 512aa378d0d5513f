#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"
#include "tests/views/ViewFixture.h"

#include <QDirIterator>
#include <QFontDatabase>
#include <QGlyphRun>
#include <QQmlComponent>
#include <QRawFont>
#include <QTemporaryDir>
#include <QTextLayout>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class GalleryModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRightToLeft MEMBER isRightToLeft CONSTANT)
    Q_PROPERTY(QString lang MEMBER lang CONSTANT)
    Q_PROPERTY(QString word MEMBER word CONSTANT)
    Q_PROPERTY(QString icon MEMBER icon CONSTANT)
    Q_PROPERTY(QStringList symbols MEMBER symbols CONSTANT)

public:
    bool isRightToLeft = false;
    QString lang = "en";
    QString word = "Word";
    QString icon;
    QStringList symbols;
    std::vector<std::string> presses;

    Q_INVOKABLE void press(const QString& what) { presses.push_back(what.toStdString()); }
};

class Controls : public ViewTest {
protected:
    Controls() {
        QDirIterator entry(":/curtain/symbols");
        while (entry.hasNext()) {
            model->symbols.push_back(QFileInfo(entry.next()).completeBaseName());
        }
        model->symbols.sort();
    }

    ShownView show() { return {{"qrc:/tests/Gallery.qml", model}, QSize(700, 560)}; }

    std::shared_ptr<GalleryModel> model = std::make_shared<GalleryModel>();
};

TEST_F(Controls, FitTheirWordsInEveryLanguage) {
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        const auto text = Curtain::PlatformWording::string(CurtainCore::LocKey::restore, language);
        model->word = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
        model->lang = QString::fromStdString(language);
        model->isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        auto view = show();
        EXPECT_THAT(view.problems(model->isRightToLeft), IsEmpty());
        view.picture("controls-" + language);
    }
}

TEST_F(Controls, ATipDoesNotOpenOnceItsButtonIsInNoWindow) {
    auto view = show();
    QTest::mouseMove(&view.window(), view.place("icon").center().toPoint());
    auto* const icon = view.find("icon");
    ASSERT_TRUE(ShownView::waitFor([&] { return icon->property("hovered").toBool(); }));
    view.root().setParentItem(nullptr);
    std::vector<std::string> warnings;
    // Tips wait for 0.6 seconds.
    EXPECT_FALSE(QTest::qWaitFor(
        [&] {
            warnings = takeWarnings();
            return !warnings.empty();
        },
        1000))
        << warnings.front();
}

TEST_F(Controls, ATipStandsBelowItsButtonAndGoesWhenThePointerLeavesThat) {
    auto view = show();
    // A pointer that has not moved hovers over nothing.
    QTest::mouseMove(&view.window(), {1, 1});
    const auto icon = view.place("icon");
    QTest::mouseMove(&view.window(), icon.center().toPoint());
    ASSERT_TRUE(ShownView::waitFor([&] { return view.find("tip") != nullptr; }));
    const auto tip = view.place("tip");
    EXPECT_GE(tip.top(), icon.bottom());
    EXPECT_NEAR(tip.center().x(), icon.center().x(), 1);
    const auto covered = tip.intersected(view.place("picker"));
    ASSERT_FALSE(covered.isEmpty());
    QTest::mouseMove(&view.window(), covered.center().toPoint());
    view.clickAt(covered.center());
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Return);
    EXPECT_THAT(model->presses, ElementsAre("picked 1"));
}

TEST_F(Controls, AnswerToClicks) {
    auto view = show();
    for (const auto* const name :
         {"primary", "tonal", "quiet", "disabled", "chip", "icon", "switch", "switch"}) {
        view.click(name);
    }
    EXPECT_THAT(model->presses, ElementsAre("primary", "tonal", "quiet", "chip", "icon", "on", "off"));
}

TEST_F(Controls, AnswerToTheKeyboardInReadingOrder) {
    auto view = show();
    view.press(Qt::Key_Tab);
    view.press(Qt::Key_Space);
    view.press(Qt::Key_Tab);
    view.press(Qt::Key_Return);
    view.press(Qt::Key_Tab);
    view.press(Qt::Key_Enter);
    EXPECT_THAT(model->presses, ElementsAre("primary", "tonal", "quiet"));
}

TEST_F(Controls, AKeyThatIsHeldCountsOnce) {
    auto view = show();
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        for (const auto* const name : {"primary", "switch"}) {
            view.find(name)->forceActiveFocus(Qt::TabFocusReason);
            view.hold(key);
        }
    }
    EXPECT_THAT(model->presses, ElementsAre("primary", "on", "primary", "off", "primary", "on"));
}

TEST_F(Controls, ShowWhereTheKeyboardIs) {
    auto view = show();
    const auto before = view.picture("controls-unfocused");
    view.press(Qt::Key_Tab);
    EXPECT_NE(view.picture("controls-focused"), before);
}

TEST_F(Controls, MenusAreUsedWithTheKeyboard) {
    auto view = show();
    view.click("opensMenu");
    EXPECT_NE(view.find("first"), nullptr);
    view.picture("controls-menu");
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Return);
    EXPECT_THAT(model->presses, ElementsAre("second"));
    EXPECT_EQ(view.find("first"), nullptr);
    view.click("opensMenu");
    view.press(Qt::Key_Escape);
    EXPECT_EQ(view.find("first"), nullptr);
}

TEST_F(Controls, PickersAreUsedWithTheKeyboard) {
    auto view = show();
    view.click("picker");
    view.picture("controls-picker");
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Return);
    EXPECT_THAT(model->presses, ElementsAre("picked 1"));
}

TEST_F(Controls, SearchIsEmptiedByEscape) {
    auto view = show();
    view.click("search");
    view.type("al");
    view.press(Qt::Key_Escape);
    EXPECT_EQ(view.find("search")->property("text").toString(), "");
    EXPECT_THAT(model->presses, ElementsAre("search a", "search al"));
}

TEST_F(Controls, SegmentsAreChosen) {
    auto view = show();
    const auto area = view.place("segments");
    view.clickAt(QPointF(area.right() - 20, area.center().y()));
    EXPECT_THAT(model->presses, ElementsAre("segment 1"));
}

TEST_F(Controls, IconsArriveLater) {
    QTemporaryDir folder;
    const auto path = folder.filePath("a b%.png");
    QImage square(64, 64, QImage::Format_RGB32);
    square.fill(Qt::red);
    ASSERT_TRUE(square.save(path));
    model->icon = "image://icon/" + QString::fromLatin1(QUrl::toPercentEncoding(path));
    auto view = show();
    const auto isRed = [&] {
        const auto icon = view.place("appIcon");
        const auto image = view.window().grabWindow();
        const auto ratio = static_cast<qreal>(image.width()) / view.window().width();
        return image.pixelColor((icon.center() * ratio).toPoint()) == QColor(Qt::red);
    };
    EXPECT_TRUE(ShownView::waitFor(isRed));
}

TEST_F(Controls, AnIconThatIsNotThereLeavesThePlaceholder) {
    model->icon = "image://icon/no-such-icon";
    auto view = show();
    auto* const icon = view.find("appIcon");
    ASSERT_NE(icon, nullptr);
    auto* const picture = icon->childItems().back();
    constexpr int ready = 1;
    ASSERT_TRUE(ShownView::waitFor([&] { return picture->property("status").toInt() == ready; }));
    EXPECT_FALSE(icon->property("isFound").toBool());
    EXPECT_THAT(takeWarnings(), testing::IsEmpty());
}

/// The colours of Theme.qml in each appearance.
class Colours : public testing::TestWithParam<QtPlatform::Appearance> {
protected:
    Colours() {
        engine_.style().setAppearance(GetParam());
        QQmlComponent component(&engine_.engine());
        component.setData("import QtQuick\nimport Curtain.Controls\nQtObject { readonly property "
                          "var theme: Theme\n"
                          "function headerTint(tone) { return Theme.headerTint(tone); }\n"
                          "function riskTint(tone) { return Theme.riskTint(tone); } }",
                          QUrl());
        holder_.reset(component.create());
        EXPECT_NE(holder_, nullptr) << component.errorString().toStdString();
    }

    QColor color(const char* token) const {
        const auto value = holder_->property("theme").value<QObject*>()->property(token);
        EXPECT_TRUE(value.isValid()) << token;
        return value.value<QColor>();
    }

    QColor tint(const char* function, const char* tone) const {
        QVariant result;
        QMetaObject::invokeMethod(holder_.get(), function, Q_RETURN_ARG(QVariant, result),
                                  Q_ARG(QVariant, QString::fromLatin1(tone)));
        return result.value<QColor>();
    }

    /// As the guidelines for accessible web content define it.
    static double contrast(const QColor& one, const QColor& other) {
        const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
        return (lighter + 0.05) / (darker + 0.05);
    }

    void expectContrast(double least, std::initializer_list<const char*> tokens,
                        std::initializer_list<const char*> grounds) const {
        for (const auto* const token : tokens) {
            for (const auto* const ground : grounds) {
                EXPECT_GE(contrast(color(token), color(ground)), least) << token << " on " << ground;
            }
        }
    }

private:
    static double luminance(const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    }

    QtPlatform::ViewEngine engine_;
    std::unique_ptr<QObject> holder_;
};

TEST_P(Colours, WordsCanBeReadOnWhatTheyStandOn) {
    const double words = GetParam().isContrastHigh ? 7 : 4.5;
    expectContrast(words, {"ink", "ink2", "ink3", "accent", "greenText", "orangeText", "redText", "grayText"},
                   {"window", "card"});
    expectContrast(4.5, {"ink"},
                   {"well", "wellHover", "wellPressed", "raised", "quietHover", "quietPressed"});
    expectContrast(4.5, {"accent"}, {"accentTint"});
    expectContrast(4.5, {"accentHover"}, {"accentTintHover"});
    expectContrast(4.5, {"accentPressed"}, {"accentTintPressed"});
    expectContrast(4.5, {"accentInk"}, {"accent", "accentHover", "accentPressed"});
    expectContrast(4.5, {"stageInk"}, {"stage"});
    for (const auto& [tone, text] : {std::pair{"green", "greenText"},
                                     {"orange", "orangeText"},
                                     {"red", "redText"},
                                     {"gray", "grayText"}}) {
        EXPECT_GE(contrast(color(text), tint("headerTint", tone)), 4.5) << tone;
        EXPECT_GE(contrast(color(text), tint("riskTint", tone)), 4.5) << tone;
    }
}

TEST_P(Colours, MarksAndTheEdgesOfFieldsCanBeSeen) {
    expectContrast(3, {"green", "orange", "red", "gray", "fieldEdge", "fieldEdgeHover", "accent"},
                   {"window", "card"});
    expectContrast(3, {"switchOff", "switchOffHover", "switchOffPressed"}, {"card"});
    expectContrast(3, {"accentInk"}, {"switchOff", "accent"});
}

std::string nameOf(const testing::TestParamInfo<QtPlatform::Appearance>& info) {
    return std::string(info.param.isDark ? "dark" : "light") +
           (info.param.isContrastHigh ? "HighContrast" : "");
}

INSTANTIATE_TEST_SUITE_P(Appearances, Colours,
                         testing::Values(QtPlatform::Appearance{}, QtPlatform::Appearance{.isDark = true},
                                         QtPlatform::Appearance{.isContrastHigh = true},
                                         QtPlatform::Appearance{.isDark = true, .isContrastHigh = true}),
                         nameOf);

/// The faces that draw these words in a language of the interface.
std::vector<std::string> facesOf(const QString& words, const QString& language) {
    QtPlatform::DesktopStyle style;
    style.setLanguage(language);
    QTextLayout layout(words, QFont(style.fontFamily()));
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    std::vector<std::string> faces;
    for (const auto& run : layout.glyphRuns()) {
        faces.push_back(run.rawFont().familyName().toLower().toStdString());
    }
    return faces;
}

TEST(Faces, ChineseHasChineseShapesWhateverTheSessionsLanguage) {
    const auto face = QStringLiteral("Noto Sans CJK SC");
    ASSERT_TRUE(QFontDatabase::hasFamily(face)) << "scripts/setup installs it";
    EXPECT_THAT(facesOf(QStringLiteral("直骨"), "zh"), ElementsAre(face.toLower().toStdString()));
}

TEST(Faces, ArabicStandsInTheFaceThatGoesWithTheLatinOne) {
    const auto face = QStringLiteral("Noto Sans Arabic");
    ASSERT_TRUE(QFontDatabase::hasFamily(face)) << "scripts/setup installs it";
    EXPECT_THAT(facesOf(QStringLiteral("مشاركة"), "ar"), ElementsAre(face.toLower().toStdString()));
}

TEST(Faces, LatinWordsKeepTheirOwn) {
    for (const auto* const language : {"zh", "ar"}) {
        EXPECT_EQ(facesOf(QStringLiteral("Curtain"), language), facesOf(QStringLiteral("Curtain"), "en"));
    }
}

} // namespace
} // namespace TestSupport

#include "ControlsTest.moc"
