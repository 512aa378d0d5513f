import QtQuick

/// A white surface with a hairline border.
Rectangle {
    color: Theme.card
    radius: Theme.cardRadius
    border.width: 1
    border.color: Theme.hairline
}
