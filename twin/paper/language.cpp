#include "twin/paper/language.h"

#include <QJsonObject>

#include <array>

namespace zemrak::paper {

namespace {

// ESC R: ESC/POS command reference, the international character sets, in the order of their numbers. They replace
// # $ @ [ \ ] ^ ` { | } ~
constexpr std::array<const char16_t *, 11> countries{u"#$@[\\]^`{|}~", u"#$à°ç§^`éùè¨", u"#$§ÄÖÜ^`äöüß",
    u"£$@[\\]^`{|}~", u"#$@ÆØÅ^`æøå~", u"#¤ÉÄÖÅÜéäöåü", u"#$@°\\é^ùàòèì", u"₧$@¡Ñ¿^`¨ñ}~", u"#$@[¥]^`{|}~",
    u"#¤ÉÆØÅÜéæøåü", u"#$ÉÆØÅÜéæøåü"};

CodePage usualPage()
{
    return CodePage::named(QStringLiteral("437")).value_or(CodePage());
}

} // namespace

PrinterLanguage::PrinterLanguage(int dots, Listener &listener)
    : m_press(dots)
    , m_listener(listener)
    , m_page(usualPage())
{
}

void PrinterLanguage::initialise()
{
    m_press.initialise();
    m_page = usualPage();
    m_pageKnown = true;
    m_country = 0;
}

void PrinterLanguage::endJob()
{
    end();
    if (!m_press.atLineStart())
        m_press.lineFeed(); // what stays in a printer's line buffer would come out with the next job
    const Receipt &receipt = m_press.receipt();
    const bool anything = !receipt.printed.isEmpty() || !receipt.problems.isEmpty();
    Receipt rest = m_press.take(false);
    m_receiptStart = m_taken;
    if (anything)
        m_listener.finished(std::move(rest));
}

void PrinterLanguage::text(QByteArrayView bytes, qint64 offset)
{
    static const QByteArray replaced("#$@[\\]^`{|}~");
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<uchar>(bytes[i]);
        if (Dots own = ownLetter(byte); !own.isEmpty()) {
            m_press.letter(byte, std::move(own));
            continue;
        }
        const qsizetype place = m_country == 0 ? -1 : replaced.indexOf(bytes[i]);
        const char32_t character = place >= 0 ? countries[static_cast<std::size_t>(m_country)][place]
            : byte < 0x80 || m_pageKnown      ? m_page.character(byte)
                                              : 0;
        if (character == 0 || !m_press.letter(character))
            undefinedByte(byte, offset + i);
    }
}

void PrinterLanguage::undefinedByte(uchar byte, qint64 offset)
{
    const auto character = static_cast<char>(byte);
    const char32_t meant = m_pageKnown ? m_page.character(byte) : 0;
    if (meant == 0)
        m_press.letter(0xfffd);
    problem(offset, QByteArrayView(&character, 1),
        !m_pageKnown     ? QStringLiteral("a letter of an unknown code page")
            : meant == 0 ? QStringLiteral("code page %1 has no such letter").arg(m_page.name())
                         : QStringLiteral("the built-in font has no U+%1").arg(uint{meant}, 4, 16, QLatin1Char('0')));
}

void PrinterLanguage::problem(qint64 offset, QByteArrayView bytes, const QString &what)
{
    m_press.problem(offset - m_receiptStart, bytes, what);
}

void PrinterLanguage::problem(const QString &what)
{
    problem(m_commandOffset, m_command, what);
}

void PrinterLanguage::startCommand(QByteArrayView prefix, QByteArrayView parameters, qint64 offset)
{
    m_command = prefix.toByteArray().append(parameters.first(std::min<qsizetype>(parameters.size(), 16)));
    m_commandOffset = offset;
}

void PrinterLanguage::done(QByteArrayView bytes)
{
    m_press.count(bytes);
    m_taken += bytes.size();
    if (!m_cutPending)
        return;
    m_cutPending = false;
    m_receiptStart = m_taken;
    m_listener.finished(m_press.take(true));
}

void PrinterLanguage::cut(const QString &mode)
{
    if (!m_press.atLineStart())
        m_press.lineFeed();
    m_press.note(QStringLiteral("cut"), {{QStringLiteral("mode"), mode}});
    m_cutPending = true;
}

void PrinterLanguage::pulse(int pin, int milliseconds)
{
    m_press.note(
        QStringLiteral("pulse"), {{QStringLiteral("pin"), pin}, {QStringLiteral("milliseconds"), milliseconds}});
}

void PrinterLanguage::symbol(const SymbolRequest &request)
{
    QString why;
    const Dots picture = drawSymbol(request, m_press.areaWidth(), &why);
    if (picture.isEmpty()) {
        problem(why);
        return;
    }
    QJsonObject facts{{QStringLiteral("type"), nameOf(request.type)}, {QStringLiteral("module"), request.module}};
    const QString data = QString::fromUtf8(request.data);
    if (data.toUtf8() == request.data)
        facts.insert(QStringLiteral("data"), data);
    else
        facts.insert(QStringLiteral("bytes"), QString::fromLatin1(request.data.toHex()));
    if (request.caption != Caption::None)
        facts.insert(QStringLiteral("caption"), true);
    m_press.picture(picture, {QStringLiteral("symbol"), {}, facts});
}

void PrinterLanguage::selectPage(const std::optional<CodePage> &page, int number)
{
    m_pageKnown = page.has_value();
    if (page)
        m_page = *page;
    else
        problem(QStringLiteral("unknown code page %1").arg(number));
}

void PrinterLanguage::selectCountry(int number)
{
    if (number < static_cast<int>(countries.size()))
        m_country = number;
    else
        problem(QStringLiteral("unknown international character set %1").arg(number));
}

class Interpreter::Private
{
public:
    std::unique_ptr<PrinterLanguage> language;
};

Interpreter::Interpreter(Language language, int dots, Listener &listener)
    : m_private(std::make_unique<Private>())
{
    m_private->language = language == Language::EscPos ? makeEscPos(dots, listener) : makeStarLine(dots, listener);
    m_private->language->initialise();
}

Interpreter::~Interpreter() = default;

void Interpreter::take(QByteArrayView bytes)
{
    m_private->language->take(bytes);
}

void Interpreter::endJob()
{
    m_private->language->endJob();
}

void Interpreter::powerCycle()
{
    m_private->language->end();
    m_private->language->initialise();
}

void Interpreter::pulse(int pin, int milliseconds)
{
    m_private->language->pulse(pin, milliseconds);
}

const Receipt &Interpreter::current() const
{
    return m_private->language->press().receipt();
}

int Interpreter::rows() const
{
    return m_private->language->press().row();
}

int Interpreter::dots() const
{
    return m_private->language->press().width();
}

} // namespace zemrak::paper
