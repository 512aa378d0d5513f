import QtQuick
import QtQuick.Window
import Curtain
import Curtain.Controls
import Curtain.Items

/// The content of the settings window: three tabs.
FocusScope {
    id: view

    required property SettingsViewModel model
    property int currentTab: 0

    implicitWidth: 440
    implicitHeight: 430
    focus: true
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true
    Keys.onEscapePressed: Window.window.close()

    Shortcut {
        sequences: view.model.closeKeys
        onActivated: view.Window.window.close()
    }
    Shortcut {
        sequences: view.model.nextTabKeys
        onActivated: tabs.step(1)
    }
    Shortcut {
        sequences: view.model.previousTabKeys
        onActivated: tabs.step(-1)
    }
    Connections {
        target: view.model
        function onLangChanged(): void {
            Desktop.language = view.model.lang;
        }
        function onShownAnew(): void {
            view.currentTab = 0;
            Desktop.language = view.model.lang;
            view.forceActiveFocus();
            keeper.forget();
        }
    }
    Connections {
        target: view.Window.window
        function onActiveChanged(): void {
            if (view.Window.active) {
                view.model.refresh();
            }
        }
    }

    // Nobody tells when the session's answers change.
    Timer {
        interval: 2000
        repeat: true
        running: view.Window.visibility !== Window.Hidden
        onTriggered: view.model.askSession()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window

        TapHandler {
            onTapped: view.forceActiveFocus()
        }
    }
    FocusKeeper { id: keeper }
    SettingsTabs {
        id: tabs
        objectName: "tabs"
        x: 16
        y: 12
        width: view.width - 32
        model: [
            { "text": view.model.texts.tabGeneral, "symbol": "gearshape", "name": "tabGeneral" },
            { "text": view.model.texts.tabApps, "symbol": "eye.slash", "name": "tabApps" },
            { "text": view.model.texts.tabPermissions, "symbol": "lock.shield", "name": "tabPermissions" }
        ]
        currentIndex: view.currentTab
        onActivated: index => view.currentTab = index
    }
    // A tab is made when it is first looked at, so that the window comes up at once.
    Repeater {
        model: ["GeneralSettings.qml", "PrivacyAppsSettings.qml", "PermissionsSettings.qml"]

        Loader {
            required property string modelData
            required property int index
            property bool wasShown: false

            x: 0
            y: 60
            width: view.width
            height: view.height - y
            visible: view.currentTab === index
            onVisibleChanged: wasShown = wasShown || visible
            Component.onCompleted: {
                wasShown = visible;
            }
            onWasShownChanged: {
                if (wasShown && source == "") {
                    setSource(modelData, { "model": view.model });
                }
            }
        }
    }
}
