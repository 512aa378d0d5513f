#include <QGuiApplication>

#include <gmock/gmock.h>

int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    const QGuiApplication application(argumentCount, arguments);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
