#pragma once

#include "twin/paper/receipt.h"

#include <QByteArrayView>

#include <memory>

namespace zemrak::paper {

enum class Language
{
    EscPos,
    StarLine
};

/// What a command asks of the printer as a device, beyond its paper. The parameters are the command's, after its
/// prefix.
enum class Request
{
    Initialise, ///< ESC @
    TransmitStatus, ///< GS r: 1 byte
    TransmitPaperSensor, ///< ESC v
    TransmitPeripheral, ///< ESC u: 1 byte
    Identify, ///< GS I: 1 byte
    AutomaticStatus, ///< GS a or ESC RS a: 1 byte
    ProcessId, ///< GS ( H, function 48: the 4 bytes to be sent back
    OfflineResponse, ///< GS ( H, function 49: 1 byte
    EndCounter, ///< ETB
    ResetEndCounter, ///< ESC RS E: 1 byte
};

/// Is told what comes of the bytes, during Interpreter::take() and endJob().
class Listener
{
public:
    virtual ~Listener() = default;
    virtual void finished(Receipt receipt) = 0;
    /// In the order of the bytes: all that stood before it has been printed.
    virtual void asked(Request, QByteArrayView) { }
};

/// Draws what a printer would print from its bytes. Knows commands and paper; no network, no time. Needs a
/// QCoreApplication. Random bytes do no harm: limits bounds what they can make it keep.
class Interpreter
{
public:
    /// @param dots across the paper; cut to what limits allows
    Interpreter(Language language, int dots, Listener &listener);
    ~Interpreter();
    Interpreter(const Interpreter &) = delete;
    Interpreter &operator=(const Interpreter &) = delete;

    void take(QByteArrayView bytes);
    /// The bytes' sender is done: what has been printed since the last cut is a receipt too.
    void endJob();
    /// As if it was switched off and on; paper that sticks out stays.
    void powerCycle();
    /// A drawer pulse that did not come in the stream's order.
    void pulse(int pin, int milliseconds);

    /// The piece of paper that is being printed.
    [[nodiscard]] const Receipt &current() const;
    /// How far it has moved.
    [[nodiscard]] int rows() const;
    [[nodiscard]] int dots() const;

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace zemrak::paper
