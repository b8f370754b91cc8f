#pragma once

#include "twin/paper/codepage.h"
#include "twin/paper/commandreader.h"
#include "twin/paper/interpreter.h"
#include "twin/paper/press.h"
#include "twin/paper/symbols.h"

namespace zemrak::paper {

/// What both languages share: their paper, their letters, and what they say about bytes.
class PrinterLanguage : public CommandReader
{
public:
    PrinterLanguage(int dots, Listener &listener);
    virtual void initialise();
    [[nodiscard]] Press &press() { return m_press; }
    void endJob();
    void pulse(int pin, int milliseconds);

protected:
    void text(QByteArrayView bytes, qint64 offset) override;
    void problem(qint64 offset, QByteArrayView bytes, const QString &what) override;
    void done(QByteArrayView bytes) override;

    /// Of the command that runs: its bytes are in the problem.
    void problem(const QString &what);
    void ask(Request request, QByteArrayView parameters = {}) { m_listener.asked(request, parameters); }
    /// "full" or "partial"; the receipt ends with the command's last byte.
    void cut(const QString &mode);
    void symbol(const SymbolRequest &request);
    void selectPage(const std::optional<CodePage> &page, int number);
    /// A letter of the till's own in place of the built-in one; empty when there is none.
    [[nodiscard]] virtual Dots ownLetter(uchar) const { return {}; }
    /// Of the command that runs, for problems.
    void startCommand(QByteArrayView prefix, QByteArrayView parameters, qint64 offset);
    /// What ESC R puts in the place of twelve ASCII characters.
    void selectCountry(int number);

private:
    void undefinedByte(uchar byte, qint64 offset);

    Press m_press;
    Listener &m_listener;
    CodePage m_page;
    bool m_pageKnown = true;
    int m_country = 0;
    bool m_cutPending = false;
    qint64 m_receiptStart = 0;
    qint64 m_taken = 0;
    qint64 m_commandOffset = 0;
    QByteArray m_command;
};

[[nodiscard]] std::unique_ptr<PrinterLanguage> makeEscPos(int dots, Listener &listener);
[[nodiscard]] std::unique_ptr<PrinterLanguage> makeStarLine(int dots, Listener &listener);

/// A parameter as a number; 0 when it is missing.
[[nodiscard]] inline int byteAt(QByteArrayView bytes, qsizetype index)
{
    return index < bytes.size() ? static_cast<uchar>(bytes[index]) : 0;
}
/// Two bytes, the lower first.
[[nodiscard]] inline int wordAt(QByteArrayView bytes, qsizetype index)
{
    return byteAt(bytes, index) + 256 * byteAt(bytes, index + 1);
}
/// Functions of many commands are chosen by 1 as well as by '1'.
[[nodiscard]] inline int digitAt(QByteArrayView bytes, qsizetype index)
{
    const int value = byteAt(bytes, index);
    return value >= '0' && value <= '9' ? value - '0' : value;
}

} // namespace zemrak::paper
