#include "designer/designerdoc.h"

#include "designer/amounts.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zemrak {

DesignerDoc DesignerDoc::sample()
{
    DesignerDoc doc;
    doc.businessName = QStringLiteral("صالون زيمراك");
    doc.subtitle = QStringLiteral("للعناية بالجمال");
    doc.address = QStringLiteral("الرياض، شارع التحلية");
    doc.phone = QStringLiteral("0500000000");
    doc.taxNumber = QStringLiteral("300000000000003");
    doc.title = QStringLiteral("فاتورة ضريبية مبسطة");
    doc.customer = QStringLiteral("سارة");
    doc.cashier = QStringLiteral("أمل");
    doc.payment = QStringLiteral("بطاقة");
    doc.items = {
        {.name = QStringLiteral("قص وتصفيف"), .qty = QStringLiteral("1"), .price = QStringLiteral("120")},
        {.name = QStringLiteral("علاج الشعر"), .qty = QStringLiteral("1"), .price = QStringLiteral("250")},
        {.name = QStringLiteral("جل تثبيت"), .qty = QStringLiteral("2"), .price = QStringLiteral("35.5")},
    };
    doc.discount = QStringLiteral("20");
    doc.vatPercent = QStringLiteral("15");
    doc.footerNote = QStringLiteral("الأسعار شاملة الضريبة");
    return doc;
}

DesignerTotals DesignerDoc::totals() const
{
    DesignerTotals totals;
    totals.lines.reserve(items.size());
    double sum = 0;
    for (const DesignerItem &item : items) {
        const double q = amountOf(item.qty);
        const double p = amountOf(item.price);
        totals.lines.append({item, q, p, roundToCents(q * p)});
        sum += totals.lines.last().total;
    }
    totals.subtotal = std::min(sum, std::numeric_limits<double>::max());
    totals.discountValue = std::min(amountOf(discount), totals.subtotal);
    totals.vatRate = std::min(amountOf(vatPercent), 100.0);
    const double net = totals.subtotal - totals.discountValue;
    totals.vat = percentOf(net, totals.vatRate);
    totals.total = roundToCents(net + totals.vat);
    return totals;
}

QString DesignerDoc::money(double value) const
{
    const QString digits = moneyWithoutCurrency(value);
    return currency.isEmpty() ? digits : digits + u' ' + currency;
}

QString DesignerDoc::moneyWithoutCurrency(double value)
{
    double amount = roundToCents(value);
    if (amount == 0)
        amount = 0; // not -0
    // From here on the digits that do not tell it from others are zeros, as on paper.
    constexpr double largestWithCents = 1e21;
    return std::abs(amount) < largestWithCents ? QString::number(amount, 'f', 2)
                                               : inFull(amount) + QStringLiteral(".00");
}

QJsonObject DesignerDoc::json() const
{
    QJsonArray rows;
    for (const DesignerItem &item : items)
        rows.append(QJsonObject{{QStringLiteral("name"), item.name}, {QStringLiteral("qty"), item.qty},
            {QStringLiteral("price"), item.price}});
    return {
        {QStringLiteral("paperWidthMm"), paperWidthMm},
        {QStringLiteral("currency"), currency},
        {QStringLiteral("businessName"), businessName},
        {QStringLiteral("subtitle"), subtitle},
        {QStringLiteral("address"), address},
        {QStringLiteral("phone"), phone},
        {QStringLiteral("taxNumber"), taxNumber},
        {QStringLiteral("title"), title},
        {QStringLiteral("receiptNo"), receiptNo},
        {QStringLiteral("customer"), customer},
        {QStringLiteral("cashier"), cashier},
        {QStringLiteral("payment"), payment},
        {QStringLiteral("items"), rows},
        {QStringLiteral("discount"), discount},
        {QStringLiteral("vatPercent"), vatPercent},
        {QStringLiteral("qrEnabled"), qrEnabled},
        {QStringLiteral("qrData"), qrData},
        {QStringLiteral("qrSize"), qrSize},
        {QStringLiteral("barcodeEnabled"), barcodeEnabled},
        {QStringLiteral("barcodeFormat"), barcodeFormat},
        {QStringLiteral("barcodeData"), barcodeData},
        {QStringLiteral("footer"), footer},
        {QStringLiteral("footerNote"), footerNote},
        {QStringLiteral("cut"), cut},
        {QStringLiteral("drawer"), drawer},
        {QStringLiteral("beep"), beep},
    };
}

} // namespace zemrak
