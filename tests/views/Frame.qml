import QtQuick
import Curtain.Controls

Rectangle {
    property QtObject camera

    RoundFrame { anchors.fill: parent }
}
