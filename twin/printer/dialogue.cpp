#include "twin/printer/dialogue.h"

namespace zemrak::twin::dialogue {

namespace {

// Bits that are always set tell the answers apart: those to DLE EOT have bits 1 and 4, the first byte of the automatic
// status has bit 4 only.
constexpr int realTimeMark = 0x12;
constexpr int automaticMark = 0x10;

QByteArray one(int byte)
{
    return QByteArray(1, static_cast<char>(byte));
}

int when(bool holds, int bits)
{
    return holds ? bits : 0;
}

bool hasPaper(const Knobs &state)
{
    return state[Knob::Paper] != PaperOut;
}

int drawerBit(const Knobs &state)
{
    return when(state[Knob::Drawer] == DrawerOpen, 0x04);
}

int errorBits(const Knobs &state)
{
    return when(state[Knob::Error] == ErrorCutter, 0x08) | when(state[Knob::Error] == ErrorFatal, 0x20)
        | when(state[Knob::Error] == ErrorOverheated, 0x40);
}

/// Of GS r and of the automatic status.
int sensorBits(const Knobs &state)
{
    return when(state[Knob::Paper] != PaperOk, 0x03) | when(!hasPaper(state), 0x0c);
}

} // namespace

bool isOffline(const Knobs &state)
{
    return !hasPaper(state) || state[Knob::Cover] == CoverOpen || state[Knob::Button] == ButtonOffline
        || state[Knob::Error] != ErrorNone;
}

QByteArray realTimeStatus(const Knobs &state, int n)
{
    switch (n) {
    case 1:
        return one(realTimeMark | drawerBit(state) | when(isOffline(state), 0x08));
    case 2:
        return one(realTimeMark | when(state[Knob::Cover] == CoverOpen, 0x04) | when(!hasPaper(state), 0x20)
            | when(state[Knob::Error] != ErrorNone, 0x40));
    case 3:
        return one(realTimeMark | errorBits(state));
    case 4:
        return one(realTimeMark | when(state[Knob::Paper] != PaperOk, 0x0c) | when(!hasPaper(state), 0x60));
    default:
        return {};
    }
}

QByteArray transmittedStatus(const Knobs &state, int n)
{
    switch (n) {
    case 1:
    case '1':
        return one(sensorBits(state));
    case 2:
    case '2':
        return one(when(state[Knob::Drawer] == DrawerOpen, 0x01));
    default:
        return {};
    }
}

QByteArray identity(int n, const QByteArray &serial)
{
    constexpr char textMark = '\x5f';
    const auto text = [](const QByteArray &what) { return textMark + what + '\0'; };
    switch (n) {
    case 1:
    case '1':
        return one(0x20); // a number that no maker's list has to know
    case 2:
    case '2':
        return one(0x02); // it has a cutter
    case 3:
    case '3':
        return one(0x01);
    case 65:
        return text(ZEMRAK_VERSION);
    case 66:
        return text("Zemrak");
    case 67:
        return text("paper-twin");
    case 68:
        return text(serial);
    default:
        return {};
    }
}

QByteArray automaticStatus(const Knobs &state)
{
    QByteArray bytes = one(
        automaticMark | drawerBit(state) | when(isOffline(state), 0x08) | when(state[Knob::Cover] == CoverOpen, 0x20));
    bytes += one(errorBits(state));
    bytes += one(sensorBits(state));
    bytes += one(0x0f);
    return bytes;
}

bool isWorthTelling(const Knobs &before, const Knobs &after, int mask)
{
    const auto differs = [&](Knob knob) { return before[knob] != after[knob]; };
    return ((mask & 0x01) != 0 && differs(Knob::Drawer))
        || ((mask & 0x02) != 0 && (isOffline(before) != isOffline(after) || differs(Knob::Cover)))
        || ((mask & 0x04) != 0 && differs(Knob::Error)) || ((mask & 0x08) != 0 && differs(Knob::Paper));
}

QByteArray processId(QByteArrayView id)
{
    return "\x37\x22" + id.toByteArray() + '\0';
}

QByteArray offlineResponse(const Knobs &state, int mode)
{
    QByteArray bytes("\x37\x23");
    if (mode == 2) // which bit is which cause differs from model to model
        bytes += one(0x40 | when(state[Knob::Cover] == CoverOpen, 0x01) | when(!hasPaper(state), 0x02)
            | when(state[Knob::Error] != ErrorNone, 0x04));
    return bytes + '\0';
}

QByteArray starStatus(const Knobs &state, int ends, bool endUntold)
{
    QByteArray bytes("\x23\x86"); // nine bytes, in their third version
    bytes += one(when(endUntold, 0x02) | when(state[Knob::Drawer] == DrawerOpen, 0x04) | when(isOffline(state), 0x08)
        | when(state[Knob::Cover] == CoverOpen, 0x20) | when(state[Knob::Button] == ButtonOffline, 0x40));
    bytes += one(errorBits(state));
    bytes += '\0';
    bytes += one(when(state[Knob::Paper] != PaperOk, 0x04) | when(!hasPaper(state), 0x08));
    bytes += '\0';
    bytes += one((ends & 0x07) << 1 | (ends & 0x18) << 2);
    bytes += '\0';
    return bytes;
}

} // namespace zemrak::twin::dialogue
