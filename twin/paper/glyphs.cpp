#include "twin/paper/glyphs.h"

#include <QFile>
#include <QRect>
#include <QtEndian>

// In a static library the resources register themselves only when asked to.
static void registerFonts()
{
    Q_INIT_RESOURCE(zemrak_paper_fonts);
}

namespace zemrak::paper {

namespace {

constexpr quint32 fontMark = 0x864ab572;
constexpr char characterEnd = '\xff';

QByteArray contents(const QString &path)
{
    registerFonts();
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

Glyphs::Glyphs(const QString &path)
    : m_file(contents(path))
{
    const auto word = [this](int index) { return qFromLittleEndian<quint32>(m_file.constData() + 4 * index); };
    if (m_file.size() < 32 || word(0) != fontMark)
        qFatal("The built-in font %s is missing", qPrintable(path));
    const int first = static_cast<int>(word(2));
    const int count = static_cast<int>(word(4));
    m_bytes = static_cast<int>(word(5));
    m_height = static_cast<int>(word(6));
    m_width = static_cast<int>(word(7));
    const QList<QByteArray> names = m_file.mid(first + count * m_bytes).split(characterEnd);
    for (int i = 0; i < count && i < names.size(); ++i)
        for (const char32_t character : QString::fromUtf8(names.at(i)).toUcs4())
            m_places.insert(character, first + i * m_bytes);
}

const Glyphs &Glyphs::fontA()
{
    static const Glyphs glyphs(QStringLiteral(":/zemrak/paper/receipt-12x24.psf"));
    return glyphs;
}

const Glyphs &Glyphs::fontB()
{
    static const Glyphs glyphs(QStringLiteral(":/zemrak/paper/receipt-9x17.psf"));
    return glyphs;
}

Dots Glyphs::cell(char32_t character) const
{
    const int stride = (m_width + 7) / 8;
    Dots cell(m_width, m_height);
    if (const int place = m_places.value(character, -1); place >= 0) {
        cell.stamp(Dots::fromRows(QByteArrayView(m_file).sliced(place, m_bytes), stride, m_height), 0, 0);
        return cell;
    }
    cell.fill({1, 2, m_width - 2, m_height - 5});
    cell.invert({2, 3, m_width - 4, m_height - 7});
    return cell;
}

} // namespace zemrak::paper
