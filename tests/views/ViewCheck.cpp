#include "tests/views/ViewCheck.h"

#include <QAccessible>
#include <QFont>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QTextLayout>

#include <cmath>
#include <cstddef>

namespace TestSupport {
namespace {

constexpr qreal tolerance = 0.75;

bool isText(const QQuickItem& item) {
    return item.inherits("QQuickText");
}

/// Children in the order of painting; what is not shown is left out.
template <typename Visit>
void visitShown(QQuickItem& item, const Visit& visit) {
    if (!item.isVisible() || item.opacity() < 0.01) {
        return;
    }
    visit(item);
    for (auto* const child : item.childItems()) {
        visitShown(*child, visit);
    }
}

QRectF contentBounds(const QQuickItem& item) {
    const auto value = [&](const char* name) { return item.property(name).toReal(); };
    const QSizeF size(value("contentWidth"), value("contentHeight"));
    qreal x = value("leftPadding");
    qreal y = value("topPadding");
    const auto freeWidth = item.width() - x - value("rightPadding") - size.width();
    const auto freeHeight = item.height() - y - value("bottomPadding") - size.height();
    const auto horizontal = item.property("effectiveHorizontalAlignment").toInt();
    x += horizontal == Qt::AlignHCenter ? freeWidth / 2 : horizontal == Qt::AlignRight ? freeWidth : 0;
    if (item.property("lineCount").toInt() <= 1) {
        // The ink: a line box says little, it is higher than its letters, and how much depends on the font.
        const QFontMetricsF metrics(item.property("font").value<QFont>());
        const auto ink = metrics.tightBoundingRect(item.property("text").toString());
        // A line of fixed height has its letters at the bottom.
        const auto isFixed = item.property("lineHeightMode").toInt() == 1;
        const auto drop = isFixed ? value("lineHeight") - metrics.height() : 0;
        return {x, item.baselineOffset() + drop + ink.top(), size.width(), ink.height()};
    }
    const auto vertical = item.property("verticalAlignment").toInt();
    y += vertical == Qt::AlignVCenter ? freeHeight / 2 : vertical == Qt::AlignBottom ? freeHeight : 0;
    return {QPointF(x, y), size};
}

/// Where its layout puts it, whatever its own transformation does to what it paints.
QRectF placeInScene(const QQuickItem& item) {
    const QRectF place(item.position(), item.size());
    return item.parentItem() ? item.parentItem()->mapRectToScene(place) : place;
}

/// Where its words are. A raised text has the letters of its lines where they belong, but not its lines'
/// boxes.
QRectF boundsInScene(const QQuickItem& item) {
    const auto content = contentBounds(item);
    return item.property("lineCount").toInt() <= 1 ? item.mapRectToScene(content)
                                                   : content.translated(placeInScene(item).topLeft());
}

bool covers(const QRectF& outer, const QRectF& inner) {
    return outer.adjusted(-tolerance, -tolerance, tolerance, tolerance).contains(inner);
}

bool isScrolling(const QQuickItem& item) {
    return item.inherits("QQuickFlickable");
}

/// What is left of `bounds` after the lists and scrolling areas around the item.
QRectF withinScrolling(const QQuickItem& item, QRectF bounds) {
    for (const auto* parent = item.parentItem(); parent != nullptr; parent = parent->parentItem()) {
        if (isScrolling(*parent) && parent->clip()) {
            bounds &= parent->mapRectToScene(QRectF(0, 0, parent->width(), parent->height()));
        }
    }
    return bounds;
}

std::string describe(const PaintedText& text) {
    const auto& bounds = text.bounds;
    return '"' + text.text.left(60).toStdString() + "\" at " + std::to_string(bounds.x()) + ", " +
           std::to_string(bounds.y()) + ", " + std::to_string(bounds.width()) + " x " +
           std::to_string(bounds.height());
}

bool hasMissingGlyphs(const PaintedText& text) {
    QTextLayout layout(text.text, text.item->property("font").value<QFont>());
    layout.beginLayout();
    while (layout.createLine().isValid()) {
    }
    layout.endLayout();
    for (const auto& run : layout.glyphRuns()) {
        if (run.glyphIndexes().contains(0U)) {
            return true;
        }
    }
    return false;
}

/// The uppermost modal popup, or else the view.
QQuickItem& usableTop(QQuickItem& top) {
    auto* usable = &top;
    visitShown(top, [&](QQuickItem& item) {
        if (item.inherits("QQuickPopupItem")) {
            usable = &item;
        }
    });
    return *usable;
}

class Findings {
public:
    explicit Findings(bool isRightToLeft) : isRightToLeft_(isRightToLeft) {}

    void inspect(const PaintedText& text, const QRectF& window) {
        const auto& item = *text.item;
        const auto mayElide = item.property("mayElide").toBool();
        if (item.property("truncated").toBool() && !mayElide) {
            add("cut short", text);
        }
        const auto content = contentBounds(item);
        // A text that is as high as it likes to be may have letters that reach out of their line.
        const auto isOwnHeight = std::abs(item.height() - item.implicitHeight()) < 0.01;
        const auto place = placeInScene(item);
        const auto isTooHigh =
            text.bounds.top() < place.top() - tolerance || text.bounds.bottom() > place.bottom() + tolerance;
        if (content.width() > item.width() + tolerance || (isTooHigh && !isOwnHeight)) {
            add("larger than its place of " + std::to_string(item.width()) + " x " +
                    std::to_string(item.height()),
                text);
        }
        const auto isScrolled = withinScrolling(item, text.bounds) != text.bounds;
        if (!isScrolled && !covers(window, text.bounds)) {
            add("outside the window", text);
        }
        for (const auto* parent = item.parentItem(); parent != nullptr; parent = parent->parentItem()) {
            const auto area = parent->mapRectToScene(QRectF(0, 0, parent->width(), parent->height()));
            if (parent->clip() && !isScrolling(*parent) && !covers(area, text.bounds)) {
                add("clipped", text);
            }
            if (parent->inherits("QQuickAbstractButton") && !covers(area, text.bounds)) {
                add("outside its control", text);
            }
        }
        const auto alignment = item.property("effectiveHorizontalAlignment").toInt();
        if (alignment != Qt::AlignHCenter && (alignment == Qt::AlignRight) != isRightToLeft_ &&
            !item.property("isLeftToRight").toBool() && item.width() > content.width() + tolerance) {
            add("on the wrong side", text);
        }
        if (hasMissingGlyphs(text)) {
            add("without a font", text);
        }
    }

    void compare(const PaintedText& one, const PaintedText& other) {
        const auto common =
            withinScrolling(*one.item, one.bounds) & withinScrolling(*other.item, other.bounds);
        if (common.width() > tolerance && common.height() > tolerance) {
            add("covered by \"" + other.text.left(60).toStdString() + '"', one);
        }
    }

    std::vector<std::string> problems;

private:
    void add(const std::string& what, const PaintedText& text) {
        problems.push_back(what + ": " + describe(text));
    }

    bool isRightToLeft_;
};

} // namespace

std::vector<PaintedText> paintedTexts(QQuickItem& top) {
    std::vector<PaintedText> texts;
    visitShown(top, [&](QQuickItem& item) {
        if (!isText(item)) {
            return;
        }
        PaintedText text{&item, item.property("text").toString(), boundsInScene(item)};
        if (!text.text.isEmpty() && !withinScrolling(item, text.bounds).isEmpty()) {
            texts.push_back(text);
        }
    });
    return texts;
}

std::vector<std::string> textProblems(QQuickItem& top, bool isRightToLeft) {
    Findings findings(isRightToLeft);
    const QRectF window(0, 0, top.width(), top.height());
    const auto texts = paintedTexts(usableTop(top));
    for (std::size_t index = 0; index < texts.size(); ++index) {
        findings.inspect(texts[index], window);
        for (std::size_t other = index + 1; other < texts.size(); ++other) {
            findings.compare(texts[index], texts[other]);
        }
    }
    if (texts.empty()) {
        findings.problems.emplace_back("there are no words at all");
    }
    return findings.problems;
}

std::vector<std::string> accessibilityProblems(QQuickItem& top) {
    std::vector<std::string> problems;
    visitShown(top, [&](QQuickItem& item) {
        auto* const interface = QAccessible::queryAccessibleInterface(&item);
        const auto isControl = item.activeFocusOnTab() && item.isEnabled();
        const auto className = std::string(item.metaObject()->className());
        if (isControl && (interface == nullptr || interface->role() == QAccessible::NoRole ||
                          interface->role() == QAccessible::Client)) {
            problems.push_back("no role: " + className);
        } else if (isControl && interface->text(QAccessible::Name).isEmpty()) {
            problems.push_back("no name: " + className);
        }
    });
    return problems;
}

} // namespace TestSupport
