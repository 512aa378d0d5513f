#include "tests/views/ViewFixture.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstdio>

namespace TestSupport {
namespace {

std::vector<std::string>& warnings() {
    static std::vector<std::string> all;
    return all;
}

void keep(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
    } else if (type == QtWarningMsg || type == QtCriticalMsg) {
        warnings().push_back(message.toStdString());
    }
}

} // namespace

std::vector<std::string> takeWarnings() {
    return std::exchange(warnings(), {});
}

} // namespace TestSupport

int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    // The build asks for the list of tests without the environment in which they run.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QTemporaryDir runtimeFolder;
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toUtf8());
    qInstallMessageHandler(TestSupport::keep);
    const QGuiApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
