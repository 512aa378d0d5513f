import QtQuick

/// A row of settings with a switch; a click anywhere in the row flips it. The new state is told, not kept: what is
/// shown is always `isOn`.
SettingsRow {
    id: row

    property bool isOn: false
    property string switchName

    signal flipped(bool on)

    onTapped: toggle.flip()

    ToggleSwitch {
        id: toggle
        objectName: row.switchName
        text: row.label
        checked: row.isOn
        onToggled: {
            const wanted = checked;
            checked = Qt.binding(() => row.isOn);
            row.flipped(wanted);
        }
    }
}
