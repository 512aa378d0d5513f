// The least that a program of this toolkit needs to show an icon in the tray; what the tray benchmark
// compares with.

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argumentCount, char** arguments) {
    QApplication application(argumentCount, arguments);
    QPixmap picture(22, 22);
    picture.fill(Qt::red);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.show();
    return QApplication::exec();
}
