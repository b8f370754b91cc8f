#pragma once

#include "designer/designeritem.h"

#include <QJsonObject>
#include <QList>

namespace zemrak {

/// An item with what it comes to.
struct DesignerLine
{
    DesignerItem item;
    double q = 0; ///< quantity, 0 or more
    double p = 0; ///< unit price, 0 or more
    double total = 0;
};

/// The receipt being designed. Numbers stay text exactly as typed; the amounts below are for showing, the service
/// computes its own. Every amount is finite and 0 or more.
struct DesignerDoc
{
    int paperWidthMm = 80;
    QString currency = QStringLiteral("SAR");
    QString businessName = QStringLiteral("Zemrak");
    QString subtitle;
    QString address;
    QString phone;
    QString taxNumber;
    QString title = QStringLiteral("فاتورة اختبار");
    QString receiptNo = QStringLiteral("T-0001");
    QString customer;
    QString cashier;
    QString payment;
    QList<DesignerItem> items{
        {.name = QStringLiteral("منتج تجريبي"), .qty = QStringLiteral("1"), .price = QStringLiteral("10")}};
    QString discount; ///< an amount, not a percentage
    QString vatPercent;
    bool qrEnabled = true;
    QString qrData = QStringLiteral("https://pos.zemrak.example");
    int qrSize = 6; ///< width of a module in dots
    bool barcodeEnabled = false;
    QString barcodeFormat = QStringLiteral("code128");
    QString barcodeData = QStringLiteral("123456789");
    QString footer = QStringLiteral("شكراً لزيارتكم");
    QString footerNote;
    bool cut = true;
    bool drawer = false;
    bool beep = false;

    [[nodiscard]] static DesignerDoc sample();

    [[nodiscard]] QList<DesignerLine> lines() const;
    [[nodiscard]] double subtotal() const;
    [[nodiscard]] double discountValue() const; ///< never more than the subtotal
    [[nodiscard]] double vatRate() const; ///< percent, 0 to 100
    [[nodiscard]] double vat() const; ///< comes on top of the net amount
    [[nodiscard]] double total() const;

    /// Two decimals, then the currency where there is one. Never "inf", "nan" or a negative zero.
    [[nodiscard]] QString money(double value) const;

    /// What is posted to the service: the 26 fields, nothing left out, text as typed.
    [[nodiscard]] QJsonObject json() const;

    bool operator==(const DesignerDoc &) const = default;
};

} // namespace zemrak
