// Stands in for the shells whose desktops are too large for the tests, and for others where they are to be
// slow:
//   DesktopShellProgram plasma ID=TYPE…    Plasma's desktops, with the scripts really run
//   DesktopShellProgram gnome ID=STATE…    GNOME's extensions
//   DesktopShellProgram xfce style=STYLE   Xfce's setting
//   DesktopShellProgram lxqt               PCManFM-Qt's desktop
// Beside the shell's own interface there is com.curtain.Test for those who look behind it.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QJSEngine>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
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

/// Follows what it is told at once or, when it hesitates, as soon as it is let.
class Shell : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    void hesitate() { isHesitating_ = true; }
    void catchUp() {
        isHesitating_ = false;
        for (const auto& task : std::exchange(postponed_, {})) {
            task();
        }
    }

protected:
    /// What `task` returns is the answer.
    template <class Task>
    auto follow(Task task) -> decltype(task()) {
        if (!isHesitating_) {
            return task();
        }
        setDelayedReply(true);
        postponed_.push_back([question = message(), bus = connection(), task] {
            bus.send(question.createReply(QVariant::fromValue(task())));
        });
        return {};
    }

private:
    bool isHesitating_ = false;
    std::vector<std::function<void()>> postponed_;
};

class ShellTest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.curtain.Test")

public:
    explicit ShellTest(Shell& shell) : shell_(shell) {}

public Q_SLOTS:
    void hesitate() { shell_.hesitate(); }
    void catchUp() { shell_.catchUp(); }

private:
    Shell& shell_;
};

class PlasmaShell : public Shell {
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
        return script.contains(QStringLiteral("writeConfig")) ? follow([this, script] { return run(script); })
                                                              : run(script);
    }

private:
    QString run(const QString& script) {
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

class PlasmaTest : public ShellTest {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.curtain.Test")

public:
    explicit PlasmaTest(PlasmaShell& shell) : ShellTest(shell), shell_(shell) {}

public Q_SLOTS:
    void add(int id, const QString& type) {
        shell_.desktops.push_back(std::make_unique<ScriptedDesktop>(id, type, nullptr));
    }
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

class GnomeShell : public Shell {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Shell.Extensions")

public:
    QMap<QString, double> states;
    bool isRefusing = false;

public Q_SLOTS:
    Extensions ListExtensions() const {
        Extensions list;
        for (auto state = states.constBegin(); state != states.constEnd(); ++state) {
            list[state.key()] = {{QStringLiteral("uuid"), state.key()},
                                 {QStringLiteral("state"), state.value()}};
        }
        return list;
    }
    bool EnableExtension(const QString& uuid) {
        return follow([this, uuid] { return setState(uuid, 1); });
    }
    bool DisableExtension(const QString& uuid) {
        return follow([this, uuid] { return setState(uuid, 2); });
    }

private:
    bool setState(const QString& uuid, double state) {
        if (isRefusing || !states.contains(uuid)) {
            return false;
        }
        states[uuid] = state;
        return true;
    }
};

class GnomeTest : public ShellTest {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.curtain.Test")

public:
    explicit GnomeTest(GnomeShell& shell) : ShellTest(shell), shell_(shell) {}

public Q_SLOTS:
    double state(const QString& uuid) { return shell_.states.value(uuid); }
    void refuse() { shell_.isRefusing = true; }
    void enable(const QString& uuid) { shell_.states[uuid] = 1; }
    void disable(const QString& uuid) { shell_.states[uuid] = 2; }

private:
    GnomeShell& shell_;
};

/// Of which only the style of the icons is asked for.
class XfceSettings : public Shell {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")

public:
    int style = 0;

public Q_SLOTS:
    QDBusVariant GetProperty(const QString&, const QString&) { return QDBusVariant(style); }
    bool SetProperty(const QString&, const QString&, const QDBusVariant& value) {
        return follow([this, value] {
            style = value.variant().toInt();
            return true;
        });
    }
};

class LxqtDesktop : public Shell {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.pcmanfm.Application")
    Q_PROPERTY(bool desktopManagerEnabled MEMBER isOn)

public:
    bool isOn = true;

public Q_SLOTS:
    bool desktopManager(bool on) {
        return follow([this, on] {
            isOn = on;
            return true;
        });
    }
};

class Program {
public:
    explicit Program(QStringList words) : role_(words.takeFirst()), words_(std::move(words)) {}

    void start() {
        if (role_ == QStringLiteral("plasma")) {
            for (const auto& [id, type] : pairs()) {
                plasma_.desktops.push_back(std::make_unique<ScriptedDesktop>(id.toInt(), type, nullptr));
            }
            serve("org.kde.plasmashell", "/PlasmaShell", plasma_, plasmaTest_);
        } else if (role_ == QStringLiteral("gnome")) {
            for (const auto& [extension, state] : pairs()) {
                gnome_.states[extension] = state.toDouble();
            }
            serve("org.gnome.Shell", "/org/gnome/Shell", gnome_, gnomeTest_);
        } else if (role_ == QStringLiteral("xfce")) {
            xfce_.style = pairs().front().second.toInt();
            serve("org.xfce.Xfconf", "/org/xfce/Xfconf", xfce_, xfceTest_);
        } else {
            serve("org.pcmanfm.PCManFM", "/Application", lxqt_, lxqtTest_);
        }
    }

private:
    std::vector<std::pair<QString, QString>> pairs() const {
        std::vector<std::pair<QString, QString>> pairs;
        for (const auto& word : words_) {
            const auto parts = word.split(QLatin1Char('='));
            pairs.emplace_back(parts.at(0), parts.at(1));
        }
        return pairs;
    }

    static void serve(const char* name, const char* path, Shell& shell, ShellTest& test) {
        auto bus = QDBusConnection::sessionBus();
        bus.registerObject(QString::fromLatin1(path), &shell,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
        bus.registerObject(QStringLiteral("/com/curtain/Test"), &test, QDBusConnection::ExportAllSlots);
        bus.registerService(QString::fromLatin1(name));
    }

    QString role_;
    QStringList words_;
    PlasmaShell plasma_;
    PlasmaTest plasmaTest_{plasma_};
    GnomeShell gnome_;
    GnomeTest gnomeTest_{gnome_};
    XfceSettings xfce_;
    ShellTest xfceTest_{xfce_};
    LxqtDesktop lxqt_;
    ShellTest lxqtTest_{lxqt_};
};

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    qDBusRegisterMetaType<Extensions>();
    Program program(QCoreApplication::arguments().mid(1));
    program.start();
    return QCoreApplication::exec();
}

#include "DesktopShellProgram.moc"
