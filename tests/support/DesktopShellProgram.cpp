// Stands in for the shells whose desktops are too large for the tests:
//   DesktopShellProgram plasma ID=TYPE…    Plasma's desktops, with the scripts really run
//   DesktopShellProgram gnome ID=STATE…    GNOME's extensions
// Beside the shell's own interface there is com.curtain.Test for those who look behind it.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QJSEngine>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <utility>
#include <vector>

using Extensions = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(Extensions)

/// What a script gets to see of a desktop.
class ScriptedDesktop : public QObject {
    Q_OBJECT
    Q_PROPERTY(int id MEMBER id CONSTANT)
    Q_PROPERTY(QString type MEMBER type CONSTANT)
    Q_PROPERTY(QStringList currentConfigGroup MEMBER group)

public:
    ScriptedDesktop(int identifier, QString plugin, QObject* parent)
        : QObject(parent),
          id(identifier),
          type(std::move(plugin)) {}

    Q_INVOKABLE QVariant readConfig(const QString& key, const QVariant& fallback) const {
        return configuration.value(path(key), fallback.toString());
    }
    Q_INVOKABLE void writeConfig(const QString& key, const QVariant& value) {
        configuration[path(key)] = value.toString();
    }
    // What was written is not seen before.
    Q_INVOKABLE void reloadConfig() { seen = configuration; }

    QString path(const QString& key) const { return group.join(QLatin1Char('/')) + QLatin1Char('/') + key; }

    int id;
    QString type;
    QStringList group;
    QMap<QString, QString> configuration;
    QMap<QString, QString> seen;
};

class Printer : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE void print(const QString& text) { output += text + QLatin1Char('\n'); }

    QString output;
};

class PlasmaShell : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.PlasmaShell")

public:
    std::vector<std::unique_ptr<ScriptedDesktop>> desktops;
    QString fixedAnswer;

public Q_SLOTS:
    QString evaluateScript(const QString& script) {
        if (!fixedAnswer.isEmpty()) {
            return fixedAnswer;
        }
        QJSEngine engine;
        Printer printer;
        QJSEngine::setObjectOwnership(&printer, QJSEngine::CppOwnership);
        auto list = engine.newArray(static_cast<uint>(desktops.size()));
        for (std::size_t index = 0; index < desktops.size(); ++index) {
            QJSEngine::setObjectOwnership(desktops[index].get(), QJSEngine::CppOwnership);
            list.setProperty(static_cast<quint32>(index), engine.newQObject(desktops[index].get()));
        }
        engine.globalObject().setProperty(QStringLiteral("allDesktops"), list);
        engine.globalObject().setProperty(QStringLiteral("printer"), engine.newQObject(&printer));
        engine.evaluate(QStringLiteral("function desktops() { return allDesktops; }"
                                       "function print(text) { printer.print(text); }"));
        const auto result = engine.evaluate(script);
        return result.isError() ? result.toString() : printer.output;
    }
};

class PlasmaTest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.curtain.Test")

public:
    explicit PlasmaTest(PlasmaShell& shell) : shell_(shell) {}

public Q_SLOTS:
    void choose(int id, const QString& key, const QString& value) {
        auto& chosen = desktop(id);
        chosen.configuration[QStringLiteral("General/") + key] = value;
        chosen.reloadConfig();
    }
    QString seen(int id, const QString& key) {
        return desktop(id).seen.value(QStringLiteral("General/") + key);
    }
    void answerWith(const QString& text) { shell_.fixedAnswer = text; }

private:
    ScriptedDesktop& desktop(int id) {
        for (const auto& candidate : shell_.desktops) {
            if (candidate->id == id) {
                return *candidate;
            }
        }
        qFatal("no such desktop");
    }

    PlasmaShell& shell_;
};

class GnomeShell : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Shell.Extensions")

public:
    QMap<QString, double> states;

public Q_SLOTS:
    Extensions ListExtensions() const {
        Extensions list;
        for (auto state = states.constBegin(); state != states.constEnd(); ++state) {
            list[state.key()] = {{QStringLiteral("uuid"), state.key()},
                                 {QStringLiteral("state"), state.value()}};
        }
        return list;
    }
    bool EnableExtension(const QString& uuid) { return setState(uuid, 1); }
    bool DisableExtension(const QString& uuid) { return setState(uuid, 2); }

private:
    bool setState(const QString& uuid, double state) {
        if (!states.contains(uuid)) {
            return false;
        }
        states[uuid] = state;
        return true;
    }
};

class GnomeTest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.curtain.Test")

public:
    explicit GnomeTest(GnomeShell& shell) : shell_(shell) {}

public Q_SLOTS:
    double state(const QString& uuid) { return shell_.states.value(uuid); }

private:
    GnomeShell& shell_;
};

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    qDBusRegisterMetaType<Extensions>();
    auto words = QCoreApplication::arguments().mid(1);
    const auto role = words.takeFirst();
    auto bus = QDBusConnection::sessionBus();
    PlasmaShell plasma;
    PlasmaTest plasmaTest(plasma);
    GnomeShell gnome;
    GnomeTest gnomeTest(gnome);
    const auto testPath = QStringLiteral("/com/curtain/Test");
    for (const auto& word : words) {
        const auto parts = word.split(QLatin1Char('='));
        if (role == QStringLiteral("plasma")) {
            plasma.desktops.push_back(
                std::make_unique<ScriptedDesktop>(parts.at(0).toInt(), parts.at(1), nullptr));
        } else {
            gnome.states[parts.at(0)] = parts.at(1).toDouble();
        }
    }
    if (role == QStringLiteral("plasma")) {
        bus.registerObject(QStringLiteral("/PlasmaShell"), &plasma, QDBusConnection::ExportAllSlots);
        bus.registerObject(testPath, &plasmaTest, QDBusConnection::ExportAllSlots);
        bus.registerService(QStringLiteral("org.kde.plasmashell"));
    } else {
        bus.registerObject(QStringLiteral("/org/gnome/Shell"), &gnome, QDBusConnection::ExportAllSlots);
        bus.registerObject(testPath, &gnomeTest, QDBusConnection::ExportAllSlots);
        bus.registerService(QStringLiteral("org.gnome.Shell"));
    }
    return QCoreApplication::exec();
}

#include "DesktopShellProgram.moc"
