pragma Singleton

import QtQuick
import Zemrak.Kit

// Every colour, size, font and duration of the window. Names that begin with g are the palette.
QtObject {
    id: root

    // The person's taste
    readonly property bool dark: Appearance.dark
    readonly property real textScale: Appearance.textScale

    // Palette
    readonly property color gPrimary: lightDark("9d4edd", "b26ae8")
    readonly property color gBg: lightDark("f8fafc", "020817")
    readonly property color gCard: lightDark("ffffff", "0b1324")
    readonly property color gBorder: lightDark("e2e8f0", "1e293b")
    readonly property color gMuted: lightDark("64748b", "94a3b8")
    readonly property color gText: lightDark("0f172a", "f8fafc")
    readonly property color gGreen: lightDark("16a34a", "4ade80")
    readonly property color gRed: lightDark("dc2626", "f87171")
    readonly property color gAmber: lightDark("d97706", "fbbf24")

    // Made of it, for states and surfaces
    readonly property color primaryFill: hex6("9d4edd") // under white text, in both appearances
    readonly property color primaryFillHover: hex6("8a3fca")
    readonly property color primaryFillPressed: hex6("7734b0")
    readonly property color onFill: hex6("ffffff")
    readonly property color dangerFill: hex6("dc2626")
    readonly property color dangerFillHover: hex6("b91c1c")
    readonly property color dangerFillPressed: hex6("991b1b")
    readonly property color hover: tint(gText, dark ? 0.06 : 0.04)
    readonly property color pressed: tint(gText, dark ? 0.11 : 0.08)
    readonly property color selected: tint(gPrimary, dark ? 0.18 : 0.10)
    readonly property color field: lightDark("ffffff", "070e1d")
    readonly property color fieldBorder: lightDark("7f8ea3", "5b6b82") // of what can be used: 3:1 on every surface
    readonly property color fieldBorderHover: lightDark("64748b", "7b8ba3")
    readonly property color track: fieldBorder
    readonly property color groove: lightDark("cbd5e1", "334155") // what has not been done yet of a progress
    readonly property color well: lightDark("f6f9fc", "111c33") // a sunken surface: code, logs, previews
    readonly property color raised: lightDark("ffffff", "111c33") // a surface over others: lists, toasts, sheets
    readonly property color glyphGround: hex6("0f172a") // under the symbols of alerts, whose colours are bright
    readonly property color scrim: dark ? tint(hex6("000000"), 0.62) : tint(hex6("0f172a"), 0.38)
    readonly property color paper: hex6("ffffff") // of a printer, with its ink: the same in both appearances
    readonly property color paperInk: hex6("111827")
    readonly property color wizard: hex6("1b0b3f")
    readonly property color toast: lightDark("0f172a", "f8fafc")
    readonly property color toastInk: lightDark("f8fafc", "0f172a")

    // Tiles of symbols, from the first to the second colour
    readonly property var purpleTile: [hex6("c084fc"), hex6("7c3aed")]
    readonly property var blueTile: [hex6("60a5fa"), hex6("2563eb")]
    readonly property var greenTile: [hex6("4ade80"), hex6("16a34a")]
    readonly property var amberTile: [hex6("fbbf24"), hex6("ea580c")]
    readonly property var redTile: [hex6("fb7185"), hex6("e11d48")]
    readonly property var grayTile: [hex6("94a3b8"), hex6("475569")]

    // Spacing grid
    readonly property int s4: 4
    readonly property int s8: 8
    readonly property int s12: 12
    readonly property int s16: 16
    readonly property int s20: 20
    readonly property int s24: 24
    readonly property int s32: 32
    readonly property int s40: 40
    readonly property int s56: 56

    // Type scale, in pixels
    readonly property string family: "Tajawal"
    readonly property string monospace: "monospace"
    readonly property int textCaption: px(12)
    readonly property int textSmall: px(13)
    readonly property int textBody: px(15)
    readonly property int textHeadline: px(17)
    readonly property int textTitle: px(24)
    readonly property int textHero: px(30)
    readonly property real leading: 1.25

    // Controls
    readonly property int controlHeight: px(40)
    readonly property int compactHeight: px(32)
    readonly property int rowHeight: px(56)
    readonly property int iconSmall: px(16)
    readonly property int iconBody: px(20)
    readonly property int iconLarge: px(28)
    readonly property int tile: px(40)
    readonly property int stroke: 1
    readonly property int ring: 2

    // Corners
    readonly property int radiusSmall: 6
    readonly property int radiusControl: 10
    readonly property int radiusCard: 16
    readonly property int radiusSheet: 20

    // Time, in milliseconds
    readonly property int quick: Appearance.reducedMotion ? 0 : 120
    readonly property int gentle: Appearance.reducedMotion ? 0 : 220
    readonly property int stage: Appearance.reducedMotion ? 0 : 500
    readonly property int advance: Appearance.reducedMotion ? 0 : 200 // from one step of the wizard to the next
    readonly property bool animated: !Appearance.reducedMotion

    readonly property real disabledOpacity: 0.45
    readonly property real offlineOpacity: 0.45

    function px(size: real): int {
        return Math.round(size * textScale);
    }
    // What stays free beside the content of a page that is `width` wide: lines that are too long are hard to read.
    function pageMargin(width: real): int {
        return Math.max(s40 - s4, Math.round((width - px(960)) / 2));
    }
    // One colour a light and one a dark appearance, each as six hexadecimal digits.
    function lightDark(light: string, dark: string): color {
        return Colors.fromHex(root.dark ? dark : light);
    }
    // The same colour in both.
    function hex6(hex: string): color {
        return Colors.fromHex(hex);
    }
    function tint(base: color, opacity: real): color {
        return Qt.rgba(base.r, base.g, base.b, opacity);
    }
    // `base` made dark or light enough to be read as small text on a card, also one tinted with it.
    function readable(base: color): color {
        return Colors.readable(base, Qt.tint(gCard, tint(base, 0.14)), gText);
    }
    // A colour as presenters name it: one of the palette, or "#rrggbb".
    function named(name: string): color {
        return name.startsWith("#") ? name : root[name];
    }
}
