#pragma once

#include "twin/control/knobs.h"
#include "twin/paper/interpreter.h"

#include <QHostAddress>
#include <QStringList>

#include <optional>

namespace zemrak::twin {

/// What the command line asks for.
struct Options
{
    bool headless = false;
    bool dark = false; ///< whatever the desktop looks like
    paper::Language language = paper::Language::EscPos;
    int dots = 576;
    QHostAddress address{QHostAddress::LocalHost};
    std::optional<quint16> port = 9100; ///< none = no raw TCP
    std::optional<quint16> lpdPort;
    std::optional<quint16> controlPort;
    bool serial = false;
    QString serialLink;
    QString folder;
    Knobs knobs;
    bool untilInputEnds = false;
};

/// Ends the program by itself after --help and --version.
/// @returns none, and the reason, when it cannot be what is meant
[[nodiscard]] std::optional<Options> readOptions(const QStringList &arguments, QString *problem);

/// Whether the command line asks for no window, before there is an application to read it with.
[[nodiscard]] bool wantsNoWindow(int argc, char **argv);

} // namespace zemrak::twin
