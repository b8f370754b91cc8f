#include "designer/symbolcheck.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace zemrak {

namespace {

enum class Alphabet
{
    Digits,
    Code39,
    PrintableAscii
};

struct Symbology
{
    const char16_t *format;
    const char16_t *name; ///< as a person knows it
    Alphabet alphabet;
    int fullLength; ///< with the check digit, which may be left out; 0 = any length
    int maximumLength; ///< that the service accepts; 0 = see fullLength
    // Widths of all bars and gaps together: fixed + perCharacter × length, in modules and in wide elements.
    int fixedModules;
    int modulesPerCharacter;
    int fixedWide;
    int widePerCharacter;
};

constexpr std::array symbologies{
    Symbology{u"code128", u"Code 128", Alphabet::PrintableAscii, 0, 80, 11 + 11 + 13, 11, 0, 0},
    Symbology{u"code39", u"Code 39", Alphabet::Code39, 0, 60, 2 * 7 - 1, 7, 2 * 3, 3},
    Symbology{u"ean13", u"EAN-13", Alphabet::Digits, 13, 0, 95, 0, 0, 0},
    Symbology{u"ean8", u"EAN-8", Alphabet::Digits, 8, 0, 67, 0, 0, 0},
    Symbology{u"upca", u"UPC-A", Alphabet::Digits, 12, 0, 95, 0, 0, 0},
    Symbology{u"itf", u"ITF", Alphabet::Digits, 0, 80, 6, 3, 1, 2},
};

// Dots of a module and of a wide element: as the service asks for, and where that is too wide for the paper. Some
// printers do not know the narrow ones and leave such a barcode out.
struct BarWidths
{
    int module;
    int wide;
};
constexpr BarWidths usualBars{2, 5};
constexpr BarWidths narrowBars{1, 2};

constexpr int widthOf(const Symbology &symbology, int length, BarWidths bars)
{
    return (symbology.fixedModules + symbology.modulesPerCharacter * length) * bars.module
        + (symbology.fixedWide + symbology.widePerCharacter * length) * bars.wide;
}

// The service has barcodes printed so high.
constexpr int barcodeHeight = 80;

// Bytes that a QR code of version 1, 2, ... holds at error correction M.
constexpr std::array qrCapacities{14, 26, 42, 62, 84, 106, 122, 152, 180, 213, 251, 287, 331, 362, 412, 450, 504, 560,
    624, 666, 711, 779, 857, 911, 997, 1059, 1125, 1190, 1264, 1370, 1452, 1538, 1628, 1722, 1809, 1911, 1989, 2099,
    2213, 2331};

const Symbology *symbologyOf(const QString &format)
{
    const auto found = std::ranges::find_if(
        symbologies, [&format](const Symbology &each) { return format == QStringView(each.format); });
    return found == symbologies.end() ? nullptr : &*found;
}

QString alphabetProblem(const Symbology &symbology, const QString &data)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]*\\z"));
    static const QRegularExpression code39(QStringLiteral("^[0-9A-Z $%*+./-]*\\z"));
    static const QRegularExpression printable(QStringLiteral("^[ -~]*\\z"));
    switch (symbology.alphabet) {
    case Alphabet::Digits:
        return digits.match(data).hasMatch() ? QString() : QStringLiteral("باركود %1 يقبل الأرقام 0 إلى 9 فقط.");
    case Alphabet::Code39:
        return code39.match(data).hasMatch()
            ? QString()
            : QStringLiteral("باركود %1 يقبل الحروف الإنجليزية الكبيرة والأرقام والمسافة والرموز - . $ / + % * فقط.");
    case Alphabet::PrintableAscii:
        return printable.match(data).hasMatch()
            ? QString()
            : QStringLiteral("باركود %1 يقبل الحروف الإنجليزية والأرقام والرموز الشائعة فقط.");
    }
    Q_UNREACHABLE();
}

/// The last digit of the EAN and UPC families: weights 3 and 1 from the right.
int checkDigit(QStringView before)
{
    int sum = 0;
    for (qsizetype i = 0; i < before.size(); ++i)
        sum += before[before.size() - 1 - i].digitValue() * (i % 2 == 0 ? 3 : 1);
    return (10 - sum % 10) % 10;
}

QString lengthProblem(const Symbology &symbology, const QString &data)
{
    const int full = symbology.fullLength;
    if (full != 0 && data.size() != full && data.size() != full - 1) {
        return QStringLiteral("باركود %1 يحتاج %2 أو %3 رقمًا، والمكتوب %4.")
            .arg(QStringView(symbology.name))
            .arg(full - 1)
            .arg(full)
            .arg(data.size());
    }
    if (data.size() == full) {
        const int expected = checkDigit(QStringView(data).chopped(1));
        if (data.back().digitValue() != expected)
            return QStringLiteral("رقم التحقق في آخر الباركود غير صحيح: الصحيح %1.").arg(expected);
    }
    if (symbology.alphabet == Alphabet::Digits && full == 0 && data.size() % 2 != 0)
        return QStringLiteral("باركود %1 يحتاج عددًا زوجيًا من الأرقام، والمكتوب %2.")
            .arg(QStringView(symbology.name))
            .arg(data.size());
    return {};
}

QString widthProblem(const Symbology &symbology, const QString &data, int paperWidthMm)
{
    const int fixed = widthOf(symbology, 0, usualBars);
    const int perCharacter = widthOf(symbology, 1, usualBars) - fixed;
    if (perCharacter == 0)
        return {};
    int fitting = (dotsOfPaper(paperWidthMm) - fixed) / perCharacter;
    if (symbology.alphabet == Alphabet::Digits)
        fitting -= fitting % 2;
    const bool fits = data.size() <= fitting;
    if (fits && data.size() <= symbology.maximumLength)
        return {};
    return QStringLiteral("البيانات أطول من عرض الورق: أقصى ما يتسع له %1 على ورق %2 مم هو %3 خانة، والمكتوب %4.")
        .arg(QStringView(symbology.name))
        .arg(paperWidthMm)
        .arg(std::min(fitting, symbology.maximumLength))
        .arg(data.size());
}

} // namespace

int dotsOfPaper(int paperWidthMm)
{
    return paperWidthMm <= 58 ? 384 : paperWidthMm <= 72 ? 512 : 576;
}

QSize qrDots(const QString &data, int size, int paperWidthMm)
{
    const auto *holding = std::ranges::lower_bound(qrCapacities, int(data.toUtf8().size()));
    const int version = std::min(int(holding - qrCapacities.begin()) + 1, int(qrCapacities.size()));
    const int modules = 17 + 4 * version;
    const int fitting = std::max(1, dotsOfPaper(paperWidthMm) / modules);
    const int edge = modules * std::clamp(size, 1, fitting);
    return {edge, edge};
}

QSize barcodeDots(const QString &format, const QString &data, int paperWidthMm)
{
    const Symbology *symbology = symbologyOf(format);
    if (!symbology)
        symbology = symbologies.data();
    const int paper = dotsOfPaper(paperWidthMm);
    const int length = int(std::min<qsizetype>(data.size(), symbology->maximumLength));
    const int usual = widthOf(*symbology, length, usualBars);
    const int width = usual <= paper ? usual : widthOf(*symbology, length, narrowBars);
    return {std::min(width, paper), barcodeHeight};
}

QString barcodeProblem(const QString &format, const QString &data, int paperWidthMm)
{
    const Symbology *symbology = symbologyOf(format);
    if (!symbology)
        return {};
    if (data.trimmed().isEmpty())
        return QStringLiteral("لا توجد بيانات للباركود، فلن يُطبع.");
    if (const QString problem = alphabetProblem(*symbology, data); !problem.isEmpty())
        return problem.arg(QStringView(symbology->name));
    if (const QString problem = lengthProblem(*symbology, data); !problem.isEmpty())
        return problem;
    return widthProblem(*symbology, data, paperWidthMm);
}

QString qrProblem(const QString &data)
{
    if (data.trimmed().isEmpty())
        return QStringLiteral("لا يوجد محتوى لرمز QR، فلن يُطبع.");
    if (data.size() > qrMaximumLength)
        return QStringLiteral("محتوى رمز QR أطول من %1 حرف بمقدار %2.")
            .arg(qrMaximumLength)
            .arg(data.size() - qrMaximumLength);
    return {};
}

} // namespace zemrak
