import QtQuick

Symbol {
    property string tone: "gray"

    name: "circle.fill"
    size: 8
    color: Theme.solid(tone)
}
