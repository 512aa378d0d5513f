import QtQuick

Rectangle {
    property var model

    color: "#2266cc"
}
