#pragma once

#include <QQuickItem>
#include <QRectF>
#include <QString>

#include <string>
#include <vector>

namespace TestSupport {

struct PaintedText {
    QQuickItem* item = nullptr;
    QString text;
    /// Where its words are, in the coordinates of the window.
    QRectF bounds;
};

/// All words that can be seen in `top` and below it.
std::vector<PaintedText> paintedTexts(QQuickItem& top);

/// What is wrong with the words in `top`: cut short or clipped (but for names that may be), wider or higher
/// than their place, outside their control or the window, on top of each other, on the wrong side of their
/// place, made of boxes for want of a font. Only what a modal popup leaves usable is looked at. Empty when
/// all is well.
std::vector<std::string> textProblems(QQuickItem& top, bool isRightToLeft);

/// Controls that can be reached with the keyboard or that say something to assistive technology without a
/// name.
std::vector<std::string> accessibilityProblems(QQuickItem& top);

} // namespace TestSupport
