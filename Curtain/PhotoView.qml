import QtQuick

/// The camera manager's test photo, scaled to fit.
Item {
    property QtObject camera
}
