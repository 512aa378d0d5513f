import QtQuick

/// Measures a word of an app's state, with the letters of any font.
StyledText {
    visible: false
    style: Theme.smallMedium
}
