#pragma once

#include "twin/control/knobs.h"

#include <QByteArray>

namespace zemrak::twin {

/// What a printer says of itself, as bytes. Facts: ESC/POS command reference; Star Line Mode command reference.
namespace dialogue {

/// Whether it prints just now.
[[nodiscard]] bool isOffline(const Knobs &state);
/// To DLE EOT n. @returns nothing when there is no such question
[[nodiscard]] QByteArray realTimeStatus(const Knobs &state, int n);
/// To GS r n.
[[nodiscard]] QByteArray transmittedStatus(const Knobs &state, int n);
/// To GS I n.
[[nodiscard]] QByteArray identity(int n, const QByteArray &serial);
/// The four bytes that GS a asks for.
[[nodiscard]] QByteArray automaticStatus(const Knobs &state);
/// Whether a change is one of those that `mask`, of GS a, asks to be told of.
[[nodiscard]] bool isWorthTelling(const Knobs &before, const Knobs &after, int mask);
/// To function 48 of GS ( H.
[[nodiscard]] QByteArray processId(QByteArrayView id);
/// What function 49 of GS ( H asks for when the printer goes offline; `mode` 1 without, 2 with the cause.
[[nodiscard]] QByteArray offlineResponse(const Knobs &state, int mode);
/// The nine bytes of Star's automatic status. @param ends how many ETB have been printed, and whether one is untold
[[nodiscard]] QByteArray starStatus(const Knobs &state, int ends, bool endUntold);

} // namespace dialogue

} // namespace zemrak::twin
