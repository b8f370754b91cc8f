#include "twin/paper/escpos.h"

#include <vector>

namespace zemrak::paper {

EscPos::EscPos(int dots, Listener &listener)
    : PrinterLanguage(dots, listener)
{
}

std::span<const CommandReader::Command> EscPos::commands() const
{
    static const std::vector<Command> list = [] {
        std::vector<Command> all;
        for (std::size_t i = 0; i < table().size(); ++i)
            all.push_back({table()[i].prefix, table()[i].length, static_cast<int>(i)});
        return all;
    }();
    return list;
}

void EscPos::run(int id, QByteArrayView parameters, qint64 offset)
{
    const Entry &entry = table()[static_cast<std::size_t>(id)];
    startCommand(entry.prefix, parameters, offset);
    (this->*entry.action)(parameters);
}

void EscPos::initialise()
{
    PrinterLanguage::initialise();
    m_unitX = 0;
    m_unitY = 0;
    m_useLetters = false;
    m_letters.clear();
    m_downloaded = {};
    m_buffered = {};
    m_barcode = {.type = SymbolType::Code128};
    m_qr = {.type = SymbolType::Qr, .module = 3, .level = 1};
    m_pdf417 = {.type = SymbolType::Pdf417, .module = 3, .height = 3, .level = -1};
    m_dataMatrix = {.type = SymbolType::DataMatrix, .module = 3};
}

std::unique_ptr<PrinterLanguage> makeEscPos(int dots, Listener &listener)
{
    return std::make_unique<EscPos>(dots, listener);
}

} // namespace zemrak::paper
