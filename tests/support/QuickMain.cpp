#include <QGuiApplication>
#include <QQuickWindow>

#include <gmock/gmock.h>

/// Runs view tests off screen with the software scene graph, unless the environment asks for something else.
int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND")) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
    const QGuiApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
