/// Draws an icon at one size: IconRenderer SOURCE.svg SIZE TARGET.png
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
    if (argumentCount != 4) {
        std::fputs("usage: IconRenderer SOURCE.svg SIZE TARGET.png\n", stderr);
        return EXIT_FAILURE;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(arguments[1]));
    const int size = QByteArray(arguments[2]).toInt();
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    if (!drawing.isValid() || !image.save(QString::fromLocal8Bit(arguments[3]))) {
        std::fprintf(stderr, "IconRenderer: %s could not be drawn\n", arguments[1]);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
