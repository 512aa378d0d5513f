import QtQuick

/// How wide a word of an app's state is.
TextMetrics {
    font.family: Theme.familyFor(text)
    font.pixelSize: Theme.smallMedium.size
    font.weight: Theme.smallMedium.weight
}
