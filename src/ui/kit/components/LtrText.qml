import QtQuick
import Zemrak.Kit

// An address, identifier, code or number: its characters run from left to right whatever stands around them, and a cut
// one keeps its beginning.
LineText {
    id: root

    property string code

    Accessible.name: code
    value: "\u2066" + code + "\u2069"
}
