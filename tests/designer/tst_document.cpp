#include "designer/amounts.h"
#include "designer/designerdoc.h"
#include "support/testmain.h"
#include "support/wiredata.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTest>

#include <cmath>
#include <limits>

using namespace zemrak;

namespace {

QJsonObject numbers()
{
    return test::storedObject(QStringLiteral("designer/numbers.json"));
}

DesignerDoc receipt(const QJsonArray &items, const QString &discount, const QString &vat)
{
    DesignerDoc doc{.currency = {}, .items = {}, .discount = discount, .vatPercent = vat};
    for (const QJsonValue &item : items)
        doc.items.append({.qty = item[0].toString(), .price = item[1].toString()});
    return doc;
}

} // namespace

class DocumentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersAsTyped()
    {
        const QJsonArray rows = numbers().value(u"parsed").toArray();
        QVERIFY(rows.size() > 30);
        for (const QJsonValue &row : rows) {
            const QString typed = row[0].toString();
            QVERIFY2(num(typed) == row[1].toDouble(-1), qPrintable(typed));
            QVERIFY2(amountOf(typed) == std::max(0.0, row[1].toDouble(-1)), qPrintable(typed));
            QVERIFY2(!std::signbit(amountOf(typed)), qPrintable(typed)); // which the comparison cannot tell for 0
        }
    }

    void amounts()
    {
        for (const QJsonValue &row : numbers().value(u"receipts").toArray()) {
            const test::InRow name(row[u"name"].toString().toUtf8());
            const DesignerDoc doc
                = receipt(row[u"items"].toArray(), row[u"discount"].toString(), row[u"vat"].toString());
            QCOMPARE(doc.lines().size(), doc.items.size());
            QCOMPARE(doc.money(doc.subtotal()), row[u"subtotal"].toString());
            QCOMPARE(doc.money(doc.discountValue()), row[u"taken"].toString());
            QCOMPARE(doc.money(doc.vat()), row[u"tax"].toString());
            QCOMPARE(doc.money(doc.total()), row[u"total"].toString());
        }
    }

    void hundredLinesAddUpAsShown()
    {
        QJsonArray items;
        for (int i = 0; i < 100; ++i)
            items.append(QJsonArray{QStringLiteral("1"), QStringLiteral("1.005")});
        const DesignerDoc doc = receipt(items, {}, {});
        QCOMPARE(doc.money(doc.lines().at(99).total), QStringLiteral("1.01"));
        QCOMPARE(doc.money(doc.total()), QStringLiteral("101.00"));
    }

    void noAmountIsEverInfinite()
    {
        const QJsonArray huge{QStringLiteral("1e308"), QStringLiteral("1e308")};
        const DesignerDoc doc = receipt({huge, huge, huge}, QStringLiteral("1e308"), QStringLiteral("100"));
        for (const double amount :
            {doc.lines().at(0).total, doc.subtotal(), doc.discountValue(), doc.vat(), doc.total()}) {
            QVERIFY(std::isfinite(amount) && amount > 1e307);
            QVERIFY(doc.money(amount).endsWith(QStringLiteral(".00")));
        }
        constexpr double infinity = std::numeric_limits<double>::infinity();
        for (const double amount : {infinity, -infinity, std::nan("")})
            QVERIFY(!doc.money(amount).contains(u'n'));
    }

    void moneyAsShown()
    {
        const std::tuple<const char *, double, const char *> rows[]
            = {{"SAR", 10, "10.00 SAR"}, {"SAR", 0, "0.00 SAR"}, {"", 10, "10.00"}, {"", 1234567.891, "1234567.89"},
                {"", -2.5, "-2.50"}, {"", -0.0, "0.00"}, {"", -0.004, "0.00"}, {"", 0.005, "0.01"}, {" ", 1, "1.00  "}};
        for (const auto &[currency, amount, shown] : rows)
            QCOMPARE(DesignerDoc{.currency = QString::fromLatin1(currency)}.money(amount), QString::fromLatin1(shown));
        QCOMPARE(DesignerDoc().currency, QStringLiteral("SAR"));
    }

    void sample()
    {
        const DesignerDoc doc = DesignerDoc::sample();
        QList<double> totals;
        for (const DesignerLine &line : doc.lines())
            totals.append(line.total);
        QCOMPARE(totals, (QList<double>{120, 250, 71}));
        QCOMPARE(doc.lines().at(2).q, 2.0);
        QCOMPARE(doc.lines().at(2).p, 35.5);
        QCOMPARE(doc.lines().at(2).item, doc.items.at(2));
        QCOMPARE(doc.money(doc.total()), QStringLiteral("484.15 SAR"));
        QCOMPARE(doc.receiptNo, QStringLiteral("T-0001"));
        QVERIFY(doc.qrEnabled && doc.cut && !doc.barcodeEnabled && !doc.drawer && !doc.beep);
    }

    void equality()
    {
        const DesignerDoc doc = DesignerDoc::sample();
        DesignerDoc copy = doc;
        QCOMPARE(copy, doc);
        copy.items[1].id = QUuid::createUuid();
        QVERIFY(copy != doc);
        QVERIFY(DesignerItem::blank().id != DesignerItem::blank().id);
        QCOMPARE(DesignerItem::blank().qty, QStringLiteral("1"));
    }

    void jsonHasEveryFieldAsTyped()
    {
        DesignerDoc doc = DesignerDoc::sample();
        doc.items[0]
            = {.name = QStringLiteral(" \"شاي\"\n"), .qty = QStringLiteral(" 1,5 "), .price = QStringLiteral("abc")};
        doc.discount = QStringLiteral(" 020,0");
        doc.title.clear();
        const QJsonObject json = QJsonDocument::fromJson(QJsonDocument(doc.json()).toJson()).object();
        const QJsonObject wire = test::storedObject(QStringLiteral("wire/designer-document.json"));
        QCOMPARE(json.keys(), wire.keys()); // the service's own idea of a document
        QCOMPARE(json.size(), 26);
        for (const QString &key : wire.keys())
            QVERIFY2(json[key].type() == wire[key].type(), qPrintable(key));
        QCOMPARE(json[u"items"].toArray().size(), 3);
        QCOMPARE(json[u"items"][0],
            QJsonValue(QJsonObject{{QStringLiteral("name"), doc.items[0].name},
                {QStringLiteral("qty"), doc.items[0].qty}, {QStringLiteral("price"), doc.items[0].price}}));
        QCOMPARE(json[u"discount"], QJsonValue(doc.discount));
        QCOMPARE(json[u"title"], QJsonValue(QString()));
        QCOMPARE(json[u"paperWidthMm"], QJsonValue(80));
        QCOMPARE(json[u"qrSize"], QJsonValue(6));
        QCOMPARE(json[u"qrEnabled"], QJsonValue(true));
        doc.items.clear();
        QCOMPARE(doc.json()[u"items"], QJsonValue(QJsonArray()));
    }
};

ZEMRAK_TEST(document, DocumentTest, QCoreApplication)
#include "tst_document.moc"
