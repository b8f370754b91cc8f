#pragma once

#include "designer/designeritem.h"

#include <QJsonObject>
#include <QList>
#include <QObject>

namespace zemrak {

/// An item with what it comes to.
struct DesignerLine
{
    DesignerItem item;
    double q = 0; ///< quantity, 0 or more
    double p = 0; ///< unit price, 0 or more
    double total = 0;
};

/// What a receipt comes to, each amount rounded to the cent where it arises.
struct DesignerTotals
{
    QList<DesignerLine> lines; ///< one for each item
    double subtotal = 0;
    double discountValue = 0; ///< never more than the subtotal
    double vatRate = 0; ///< percent, 0 to 100
    double vat = 0; ///< comes on top of the net amount
    double total = 0;
};

/// The receipt being designed. Numbers stay text exactly as typed; the amounts below are for showing, the service
/// computes its own. Every amount is finite and 0 or more. Forms find the single fields as properties.
struct DesignerDoc
{
    Q_GADGET
    Q_PROPERTY(int paperWidthMm MEMBER paperWidthMm)
    Q_PROPERTY(QString currency MEMBER currency)
    Q_PROPERTY(QString businessName MEMBER businessName)
    Q_PROPERTY(QString subtitle MEMBER subtitle)
    Q_PROPERTY(QString address MEMBER address)
    Q_PROPERTY(QString phone MEMBER phone)
    Q_PROPERTY(QString taxNumber MEMBER taxNumber)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString receiptNo MEMBER receiptNo)
    Q_PROPERTY(QString customer MEMBER customer)
    Q_PROPERTY(QString cashier MEMBER cashier)
    Q_PROPERTY(QString payment MEMBER payment)
    Q_PROPERTY(QString discount MEMBER discount)
    Q_PROPERTY(QString vatPercent MEMBER vatPercent)
    Q_PROPERTY(bool qrEnabled MEMBER qrEnabled)
    Q_PROPERTY(QString qrData MEMBER qrData)
    Q_PROPERTY(int qrSize MEMBER qrSize)
    Q_PROPERTY(bool barcodeEnabled MEMBER barcodeEnabled)
    Q_PROPERTY(QString barcodeFormat MEMBER barcodeFormat)
    Q_PROPERTY(QString barcodeData MEMBER barcodeData)
    Q_PROPERTY(QString footer MEMBER footer)
    Q_PROPERTY(QString footerNote MEMBER footerNote)
    Q_PROPERTY(bool cut MEMBER cut)
    Q_PROPERTY(bool drawer MEMBER drawer)
    Q_PROPERTY(bool beep MEMBER beep)

public:
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

    [[nodiscard]] DesignerTotals totals() const;
    // The same one by one; where several are wanted, totals() reads the items once.
    [[nodiscard]] QList<DesignerLine> lines() const { return totals().lines; }
    [[nodiscard]] double subtotal() const { return totals().subtotal; }
    [[nodiscard]] double discountValue() const { return totals().discountValue; }
    [[nodiscard]] double vatRate() const { return totals().vatRate; }
    [[nodiscard]] double vat() const { return totals().vat; }
    [[nodiscard]] double total() const { return totals().total; }

    /// Two decimals, then the currency where there is one. Never "inf", "nan" or a negative zero.
    [[nodiscard]] QString money(double value) const;
    [[nodiscard]] static QString moneyWithoutCurrency(double value);

    /// What is posted to the service: the 26 fields, nothing left out, text as typed.
    [[nodiscard]] QJsonObject json() const;

    bool operator==(const DesignerDoc &) const = default;
};

} // namespace zemrak
