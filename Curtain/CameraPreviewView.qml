import QtQuick

/// The live picture of a capture session. It fills the view and is cropped, never letterboxed.
Rectangle {
    /// The camera manager whose session is shown.
    property QtObject camera
    property bool mirrored: false

    color: "black"
}
