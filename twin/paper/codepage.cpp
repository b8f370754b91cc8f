#include "twin/paper/codepage.h"

#include <QHash>
#include <QStringDecoder>

#include <span>

namespace zemrak::paper {

namespace {

struct Numbered
{
    int number;
    const char *name;
};

// The page of katakana and line pieces, from 0x80 on; NUL = undefined.
constexpr char16_t katakana[] = u"\u2581\u2582\u2583\u2584\u2585\u2586\u2587\u2588\u258f\u258e\u258d\u258c\u258b\u258a"
                                u"\u2589\u253c\u2534\u252c\u2524\u251c\u2594\u2500\u2502\u2595\u250c\u2510\u2514\u2518"
                                u"\u256d\u256e\u2570\u256f";
constexpr char32_t firstKana = 0xff61; // of the halfwidth forms, at 0xa1
constexpr int kanaAt = 0xa1;
constexpr int kanaEnd = 0xe0;

// ESC t: ESC/POS command reference, the character code tables. The Thai pages are left out.
constexpr Numbered escPosPages[] = {{0, "437"}, {1, "katakana"}, {2, "850"}, {3, "860"}, {4, "863"}, {5, "865"},
    {11, "851"}, {13, "857"}, {14, "737"}, {15, "8859-7"}, {16, "1252"}, {17, "866"}, {18, "852"}, {19, "858"},
    {32, "720"}, {33, "775"}, {34, "855"}, {35, "861"}, {36, "862"}, {37, "864"}, {38, "869"}, {39, "8859-2"},
    {40, "8859-15"}, {41, "1098"}, {44, "1125"}, {45, "1250"}, {46, "1251"}, {47, "1253"}, {48, "1254"}, {49, "1255"},
    {50, "1256"}, {51, "1257"}, {52, "1258"}};

// ESC GS t: Star Line Mode command reference, the character tables.
constexpr Numbered starPages[] = {{0, "437"}, {1, "437"}, {2, "katakana"}, {3, "437"}, {4, "858"}, {5, "852"},
    {6, "860"}, {7, "861"}, {8, "863"}, {9, "865"}, {10, "866"}, {11, "855"}, {12, "857"}, {13, "862"}, {14, "864"},
    {15, "737"}, {16, "851"}, {17, "869"}, {32, "1252"}, {33, "1250"}, {34, "1251"}};

std::optional<CodePage> find(std::span<const Numbered> pages, int number)
{
    for (const Numbered &page : pages)
        if (page.number == number)
            return CodePage::named(QString::fromLatin1(page.name));
    return {};
}

QByteArray converterOf(const QString &name)
{
    if (name.startsWith(QLatin1String("8859-")))
        return "ISO-" + name.toLatin1();
    if (name.size() == 4 && name.startsWith(QLatin1String("125")))
        return "windows-" + name.toLatin1();
    return "ibm-" + name.toLatin1();
}

} // namespace

std::optional<CodePage> CodePage::named(const QString &name)
{
    static QHash<QString, CodePage> known;
    if (const auto found = known.constFind(name); found != known.constEnd())
        return *found;
    if (name == QLatin1String("katakana")) {
        CodePage page;
        page.m_name = name;
        for (int byte = 0x80; byte < kanaEnd; ++byte)
            page.m_upper[static_cast<std::size_t>(byte - 0x80)] = byte < kanaAt - 1 ? katakana[byte - 0x80]
                : byte >= kanaAt                                                    ? firstKana + (byte - kanaAt)
                                                                                    : U' ';
        known.insert(name, page);
        return page;
    }
    QStringDecoder decoder(converterOf(name).constData(), QStringDecoder::Flag::Stateless);
    if (!decoder.isValid())
        return {};
    CodePage page;
    page.m_name = name;
    for (std::size_t i = 0; i < page.m_upper.size(); ++i) {
        const auto byte = static_cast<char>(0x80 + i);
        const QList<uint> decoded = QString(decoder(QByteArrayView(&byte, 1))).toUcs4();
        // C1 controls and the replacement character: nothing to print.
        const bool prints
            = decoded.size() == 1 && decoded.front() >= 0xa0 && decoded.front() != QChar::ReplacementCharacter;
        page.m_upper[i] = prints ? decoded.front() : 0;
    }
    known.insert(name, page);
    return page;
}

std::optional<CodePage> CodePage::ofEscPos(int number)
{
    return find(escPosPages, number);
}

std::optional<CodePage> CodePage::ofStar(int number)
{
    return find(starPages, number);
}

char32_t CodePage::character(uchar byte) const
{
    return byte < 0x80 ? byte : m_upper[byte - 0x80];
}

} // namespace zemrak::paper
