#include "textrender/textpicture.h"

#include <QFontDatabase>
#include <QPainter>
#include <QRawFont>
#include <QRegularExpression>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace zemrak {

namespace {

// Letters about as tall as those of a printer's own 24-dot font.
constexpr int letterPixels = 27;
// Between a text and the one at the opposite edge.
constexpr qreal gap = 16;

// From this share of a dot on it is printed. Less than half: a thin stroke between two columns of dots keeps both,
// since one column of dots alone prints pale.
constexpr double inkFromCoverage = 0.3;

QString &typeface()
{
    static QString family;
    return family;
}

/// Whether the typeface has every letter of the text; what is not seen, such as a mark of direction, is none.
bool hasLettersOf(const QFont &font, const QString &text)
{
    const QRawFont own = QRawFont::fromFont(font);
    const QList<uint> letters = text.toUcs4();
    return std::all_of(letters.begin(), letters.end(), [&own](uint letter) {
        const QChar::Category category = QChar::category(letter);
        return category == QChar::Other_Format || category == QChar::Other_Control || own.supportsCharacter(letter);
    });
}

QFont fontOf(const LineOfPaper &line)
{
    QFont font(typeface());
    font.setPixelSize(letterPixels);
    font.setBold(line.bold);
    font.setUnderline(line.underline);
    // The same dots on every computer, whatever its desktop prefers.
    font.setHintingPreference(QFont::PreferNoHinting);
    // Nor whatever else is installed: Qt would take marks of direction from another typeface, with the height of that.
    if (hasLettersOf(font, line.text) && hasLettersOf(font, line.opposite))
        font.setStyleStrategy(QFont::NoFontMerging);
    return font;
}

/// Line ends of every kind as \n, what does not print taken out.
QString printable(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar &each : text) {
        if (each == u'\r' || each == u'\v' || each == u'\f' || each == QChar::LineSeparator
            || each == QChar::ParagraphSeparator)
            each = u'\n';
        else if (each == u'\t')
            each = u' ';
    }
    text.removeIf([](QChar each) { return each != u'\n' && each.category() == QChar::Other_Control; });
    return text;
}

qreal naturalWidth(const QFont &font, const QString &text)
{
    QTextLayout layout(text, font);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid())
        line.setNumColumns(static_cast<int>(text.size()));
    layout.endLayout();
    return std::ceil(layout.maximumWidth());
}

/// What the two need to share a line: the opposite text whole, and room for every word of the text.
qreal widthOfPair(const QFont &font, const QString &text, const QString &opposite)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    qreal widest = 0;
    for (const QString &word : text.split(blanks))
        widest = std::max(widest, naturalWidth(font, word));
    return widest + gap + naturalWidth(font, opposite);
}

/// Lays lines out from the top down, before anything is drawn: only then is the picture's height known.
class Layout
{
public:
    Layout(const QFont &font, qreal width)
        : m_font(font)
        , m_width(width)
    {
    }

    void add(const QString &text, Qt::Alignment edge, qreal width, qreal left)
    {
        const QStringList paragraphs = text.split(u'\n');
        for (const QString &paragraph : paragraphs)
            addParagraph(paragraph, edge, width, left);
    }

    void addAcross(const QString &text, Qt::Alignment edge) { add(text, edge, m_width, 0); }

    /// Both on one line where they fit; the opposite one alone below else.
    void addPair(const QString &text, const QString &opposite, Qt::Alignment edge)
    {
        const Qt::Alignment other = edge == Qt::AlignLeft ? Qt::AlignRight : Qt::AlignLeft;
        if (opposite.contains(u'\n') || widthOfPair(m_font, text, opposite) > m_width) {
            addAcross(text, edge);
            addAcross(opposite, other);
            return;
        }
        const qreal taken = naturalWidth(m_font, opposite) + gap;
        add(text, edge, m_width - taken, edge == Qt::AlignLeft ? 0 : taken);
        m_height = m_lastTop;
        addAcross(opposite, other);
    }

    [[nodiscard]] qreal height() const { return m_height; }

    void draw(QPainter *painter) const
    {
        for (const std::unique_ptr<QTextLayout> &paragraph : m_paragraphs)
            paragraph->draw(painter, QPointF(0, 0));
    }

private:
    void addParagraph(const QString &text, Qt::Alignment edge, qreal width, qreal left)
    {
        auto layout = std::make_unique<QTextLayout>(text, m_font);
        QTextOption option(edge | Qt::AlignAbsolute);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        option.setTextDirection(Qt::LayoutDirectionAuto);
        layout->setTextOption(option);
        layout->beginLayout();
        // A paragraph that cannot fit the picture any more is not worth breaking to its end.
        while (m_height <= maximumPictureRows) {
            QTextLine line = layout->createLine();
            if (!line.isValid())
                break;
            line.setLineWidth(width);
            line.setPosition(QPointF(left, m_height));
            m_lastTop = m_height;
            m_height += std::ceil(line.height());
        }
        layout->endLayout();
        m_paragraphs.push_back(std::move(layout));
    }

    QFont m_font;
    qreal m_width;
    qreal m_height = 0;
    qreal m_lastTop = 0;
    std::vector<std::unique_ptr<QTextLayout>> m_paragraphs;
};

QImage blackAndWhite(const QImage &grey)
{
    QImage picture(grey.size(), QImage::Format_Mono);
    picture.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    picture.fill(0);
    const auto lightestInk = static_cast<uchar>(255 * (1 - inkFromCoverage));
    for (int y = 0; y < grey.height(); ++y) {
        const uchar *from = grey.constScanLine(y);
        uchar *to = picture.scanLine(y);
        for (int x = 0; x < grey.width(); ++x)
            if (from[x] <= lightestInk)
                to[x / 8] = static_cast<uchar>(to[x / 8] | 0x80 >> x % 8);
    }
    return picture;
}

} // namespace

bool loadTypeface(const QString &folder)
{
    // By name: a further weight in the folder must not change what "not bold" looks like.
    for (const QString &file : {QStringLiteral("/Tajawal-Regular.ttf"), QStringLiteral("/Tajawal-Bold.ttf")}) {
        const int id = QFontDatabase::addApplicationFont(folder + file);
        if (id >= 0 && typeface().isEmpty())
            typeface() = QFontDatabase::applicationFontFamilies(id).value(0);
    }
    return !typeface().isEmpty();
}

QImage drawTextPicture(const LineOfPaper &line)
{
    const Qt::Alignment edge = line.edge == LineOfPaper::Edge::Left ? Qt::AlignLeft
        : line.edge == LineOfPaper::Edge::Right                     ? Qt::AlignRight
                                                                    : Qt::AlignHCenter;
    const bool isPair = !line.opposite.isEmpty() && line.edge != LineOfPaper::Edge::Center;
    const QString text = printable(line.text);
    const QString opposite = printable(line.opposite);
    const QFont font = fontOf(line);
    qreal across = line.across;
    if (isPair && across > 1) {
        // A total and its amount belong on one line: rather narrower letters than two lines.
        const qreal fitting = std::floor(4 * line.width / widthOfPair(font, text, opposite)) / 4;
        across = std::clamp(fitting, 1.0, across);
    }
    // Laid out small and drawn large.
    Layout layout(font, line.width / across);
    if (isPair)
        layout.addPair(text, opposite, edge);
    else
        layout.addAcross(text, edge);

    const int rows = static_cast<int>(std::ceil(layout.height() * line.down));
    if (rows > maximumPictureRows)
        return {};
    QImage grey(line.width, rows, QImage::Format_Grayscale8);
    grey.fill(Qt::white);
    QPainter painter(&grey);
    painter.scale(across, line.down);
    layout.draw(&painter);
    painter.end();
    QImage picture = blackAndWhite(grey);
    if (line.invert)
        picture.invertPixels();
    return picture;
}

} // namespace zemrak
