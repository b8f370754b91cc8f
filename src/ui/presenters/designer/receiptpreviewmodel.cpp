#include "ui/presenters/designer/receiptpreviewmodel.h"

#include "designer/amounts.h"
#include "designer/symbolcheck.h"

namespace zemrak {

namespace {

bool isFilled(const QString &text)
{
    return !text.trimmed().isEmpty();
}

class Paper
{
public:
    void text(const QString &id, const QString &text, const QString &label = {})
    {
        if (isFilled(text))
            m_lines.append({.id = id, .kind = QStringLiteral("text"), .label = label, .text = text});
    }
    void centred(
        const QString &id, const QString &text, const QString &label = {}, bool strong = false, bool large = false)
    {
        if (!isFilled(text))
            return;
        this->text(id, text, label);
        m_lines.last().centred = true;
        m_lines.last().strong = strong;
        m_lines.last().large = large;
    }
    void row(const QString &id, const QString &text, const QString &amount, bool strong = false)
    {
        m_lines.append({.id = id,
            .kind = QStringLiteral("text"),
            .text = text,
            .amount = amount,
            .strong = strong,
            .large = strong});
    }
    void rule(const QString &id) { m_lines.append({.id = id, .kind = QStringLiteral("rule")}); }
    void symbol(const QString &name, QSize dots)
    {
        m_lines.append({.id = name, .kind = QStringLiteral("symbol"), .symbol = name, .dots = dots});
    }
    [[nodiscard]] const QList<PreviewLine> &lines() const { return m_lines; }

private:
    QList<PreviewLine> m_lines;
};

void header(Paper &paper, const DesignerDoc &doc)
{
    paper.centred(QStringLiteral("businessName"), doc.businessName, {}, true, true);
    paper.centred(QStringLiteral("subtitle"), doc.subtitle);
    paper.centred(QStringLiteral("address"), doc.address);
    paper.centred(QStringLiteral("phone"), doc.phone);
    paper.centred(QStringLiteral("taxNumber"), doc.taxNumber, QStringLiteral("VAT:"));
    paper.rule(QStringLiteral("rule1"));
    paper.centred(QStringLiteral("title"), doc.title, {}, true);
}

void details(Paper &paper, const DesignerDoc &doc, const QString &stamp)
{
    paper.text(QStringLiteral("receiptNo"), doc.receiptNo, QStringLiteral("No:"));
    paper.text(QStringLiteral("stamp"), stamp);
    paper.text(QStringLiteral("customer"), doc.customer, QStringLiteral("العميل:"));
    paper.text(QStringLiteral("cashier"), doc.cashier, QStringLiteral("الكاشير:"));
    paper.text(QStringLiteral("payment"), doc.payment, QStringLiteral("الدفع:"));
    paper.rule(QStringLiteral("rule2"));
}

void amounts(Paper &paper, const DesignerDoc &doc)
{
    const DesignerTotals totals = doc.totals();
    for (const DesignerLine &line : totals.lines) {
        const QString id = line.item.id.toString(QUuid::WithoutBraces);
        paper.text(id, line.item.name);
        paper.row(id + u'=', inFull(line.q) + QStringLiteral(" × ") + DesignerDoc::moneyWithoutCurrency(line.p),
            doc.money(line.total));
    }
    paper.rule(QStringLiteral("rule3"));
    paper.row(QStringLiteral("subtotal"), QStringLiteral("المجموع"), doc.money(totals.subtotal));
    if (roundToCents(totals.discountValue) > 0)
        paper.row(QStringLiteral("discount"), QStringLiteral("الخصم"), u'-' + doc.money(totals.discountValue));
    if (isFilled(doc.vatPercent))
        paper.row(QStringLiteral("vat"), QStringLiteral("الضريبة \u2066%1%\u2069").arg(qint64(totals.vatRate)),
            doc.money(totals.vat));
    paper.row(QStringLiteral("total"), QStringLiteral("الإجمالي"), doc.money(totals.total), true);
    paper.rule(QStringLiteral("rule4"));
}

} // namespace

QList<PreviewLine> previewLines(const DesignerDoc &doc, const QString &stamp)
{
    Paper paper;
    header(paper, doc);
    details(paper, doc, stamp);
    amounts(paper, doc);
    // Also while there is no content yet: it shows where the symbol goes, and beside the field stands that there is
    // nothing to print.
    if (doc.qrEnabled)
        paper.symbol(QStringLiteral("qrcode"), qrDots(doc.qrData, doc.qrSize, doc.paperWidthMm));
    if (doc.barcodeEnabled)
        paper.symbol(QStringLiteral("barcode"), barcodeDots(doc.barcodeFormat, doc.barcodeData, doc.paperWidthMm));
    paper.centred(QStringLiteral("footer"), doc.footer, {}, true);
    paper.centred(QStringLiteral("footerNote"), doc.footerNote);
    return paper.lines();
}

QVariant ReceiptPreviewModel::value(const PreviewLine &line, int role) const
{
    switch (role) {
    case KindRole:
        return line.kind;
    case LabelRole:
        return line.label;
    case Qt::DisplayRole:
    case TextRole:
        return line.text;
    case AmountRole:
        return line.amount;
    case CentredRole:
        return line.centred;
    case StrongRole:
        return line.strong;
    case LargeRole:
        return line.large;
    case SymbolRole:
        return line.symbol;
    case DotsRole:
        return line.dots;
    default:
        return {};
    }
}

QHash<int, QByteArray> ReceiptPreviewModel::roleNames() const
{
    return {{KindRole, "kind"}, {LabelRole, "label"}, {TextRole, "text"}, {AmountRole, "amount"},
        {CentredRole, "centred"}, {StrongRole, "strong"}, {LargeRole, "large"}, {SymbolRole, "symbol"},
        {DotsRole, "dots"}};
}

} // namespace zemrak
