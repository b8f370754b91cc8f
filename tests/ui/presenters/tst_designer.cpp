// The designer without its page: what the paper shows, what is sent, and what a person must not lose.
#include "designer/symbolcheck.h"
#include "support/wiredata.h"
#include "ui/presenters/designer/designerpresenter.h"
#include "ui/presenters/presentertest.h"

#include <QMetaProperty>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const char *const print = "/admin/designer/print";

struct Fixture : Parts
{
    DesignerPresenter view{commands, toast, 0};

    /// "NAME STATE, NAME STATE"; null: the service does not answer.
    void havePrinters(const char *printers)
    {
        AgentState state;
        for (const QString &printer : QString::fromUtf8(printers).split(u", "_s, Qt::SkipEmptyParts)) {
            const QString name = printer.section(u' ', 0, 0);
            state.printers.append({.id = name, .name = name, .state = printer.section(u' ', 1)});
        }
        view.show(printers ? &state : nullptr);
    }
    QString itemId(int row) { return cells(*view.items(), row, "itemId"); }
};

/// A receipt of the shared rows: the bare one with its changes.
DesignerDoc receipt(const QJsonObject &bare, const QJsonObject &changes)
{
    DesignerDoc doc;
    const QMetaObject &fields = DesignerDoc::staticMetaObject;
    for (int i = 0; i < fields.propertyCount(); ++i) {
        const QLatin1StringView name(fields.property(i).name());
        fields.property(i).writeOnGadget(&doc, (changes.contains(name) ? changes : bare).value(name).toVariant());
    }
    doc.items.clear();
    for (const QJsonValue &item : changes.value(u"items").toArray())
        doc.items.append({.name = item[0].toString(), .qty = item[1].toString(), .price = item[2].toString()});
    return doc;
}

/// A line as the shared rows write it.
QString painted(const PreviewLine &line)
{
    if (line.kind == "rule"_L1)
        return u"-"_s;
    if (line.kind == "symbol"_L1)
        return u"[%1 %2]"_s.arg(line.symbol).arg(line.dots.width());
    const QString look = QLatin1String(line.centred ? "^" : "") + QLatin1String(line.strong ? "*" : "")
        + QLatin1String(line.large ? "#" : "");
    const QString text = line.label.isEmpty() ? line.text : line.label + u' ' + line.text;
    return look + (line.amount.isEmpty() ? text : text + u" | "_s + line.amount);
}

} // namespace

class DesignerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paperLineByLine()
    {
        const QJsonObject shared = storedObject(u"designer/receipts.json"_s);
        const QJsonArray rows = shared.value(u"receipts").toArray();
        QVERIFY(rows.size() >= 5);
        for (const QJsonValue &row : rows) {
            QStringList lines;
            for (const PreviewLine &line :
                previewLines(receipt(shared.value(u"bare").toObject(), row[u"doc"].toObject()), u"now"_s))
                lines.append(painted(line));
            QCOMPARE(lines, row[u"lines"].toVariant().toStringList());
        }
    }

    void editTouchesOneRow()
    {
        Fixture f;
        f.view.loadSample();
        QSignalSpy rows(f.view.items(), &QAbstractItemModel::dataChanged);
        QSignalSpy lines(f.view.preview(), &QAbstractItemModel::dataChanged);
        QSignalSpy inserted(f.view.items(), &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(f.view.items(), &QAbstractItemModel::rowsRemoved);
        const QString second = f.itemId(1);
        f.view.setItemName(second, u"علاج"_s);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(rows.first().at(2).value<QList<int>>(), QList<int>{DesignerItemModel::NameRole});
        QCOMPARE(lines.size(), 1); // its line
        f.view.setItemPrice(second, u"100"_s);
        QCOMPARE(lines.size(), 1 + 4); // its amount, subtotal, VAT, total
        QCOMPARE(cells(*f.view.preview(), lines.last().at(0).toModelIndex().row(), "amount"), u"311.65 SAR"_s);
        f.view.setItemQty(u"gone"_s, u"9"_s);
        QVERIFY(inserted.isEmpty() && removed.isEmpty());
        f.view.addItem();
        f.view.removeItem(second);
        QVERIFY(inserted.size() == 1 && removed.size() == 1 && f.view.doc().items.size() == 3);
        QCOMPARE(f.view.doc().items.last().qty, u"1"_s);
    }

    void nothingTypedIsLost()
    {
        Fixture f;
        DesignerPresenter &view = f.view;
        view.loadSample(); // in place of the defaults, which nobody typed
        QVERIFY(!view.canUndo());
        DesignerDoc doc = view.doc();
        doc.customer = u"نورة"_s;
        view.setDoc(doc);
        view.reset();
        QCOMPARE(view.doc().json(), DesignerDoc().json());
        QVERIFY(view.canUndo());
        view.undo();
        QCOMPARE(view.doc(), doc);
        QVERIFY(!view.canUndo());
        view.loadSample();
        view.loadSample(); // pressed twice
        view.reset();
        view.undo();
        QCOMPARE(view.doc(), doc);
        view.removeItem(f.itemId(0));
        QVERIFY(view.canUndo());
        view.setItemQty(f.itemId(0), u"5"_s);
        QVERIFY(!view.canUndo()); // it would take this back as well
        view.undo();
        QCOMPARE(view.doc().items.first().qty, u"5"_s);
    }

    void staysWithinWhatTheServiceTakes()
    {
        Fixture f;
        DesignerPresenter &view = f.view;
        DesignerDoc doc;
        doc.subtitle = QString(5000, u'س');
        doc.qrData = QString(612, u'x');
        doc.items.fill(DesignerItem::blank(), 299);
        for (DesignerItem &item : doc.items)
            item.id = QUuid::createUuid();
        view.setDoc(doc);
        QCOMPARE(view.doc().subtitle.size(), 2000);
        QCOMPARE(view.qrCounter(), u"612 / 600"_s);
        QVERIFY(view.qrProblemText().contains(u"12"_s));
        QVERIFY(view.canAddItem() && view.itemsProblem().isEmpty());
        view.addItem();
        QVERIFY(!view.canAddItem() && view.itemsProblem().contains(u"300"_s));
        view.addItem();
        QCOMPARE(view.doc().items.size(), 300);
        view.removeItem(f.itemId(9));
        view.setItemName(f.itemId(9), QString(2001, u'x'));
        QCOMPARE(view.doc().items.at(9).name.size(), 2000);
        QVERIFY(view.itemsProblem().contains(u"2000"_s));
        const auto told = [&view](const QString &qty, const QString &price, const QString &vat) {
            view.setDoc({.items = {{.qty = qty, .price = price}}, .vatPercent = vat});
            return view.itemsProblem();
        };
        QVERIFY(told(u"1e8"_s, u"1e5"_s, {}).isEmpty());
        QCOMPARE(told(u"1e8"_s, u"1e5"_s, u"15"_s), u"المبلغ أكبر من الحد المسموح للطباعة."_s);
        QCOMPARE(told(u"1e8"_s, u"1e8"_s, {}), u"المبلغ أكبر من الحد المسموح للطباعة."_s);
        doc.barcodeFormat = u"ean8"_s;
        for (const bool isPrinted : {false, true}) {
            doc.barcodeEnabled = isPrinted;
            view.setDoc(doc);
            QCOMPARE(view.barcodeProblemText().isEmpty(), !isPrinted);
        }
    }

    void choosesAPrinterThatIsThere()
    {
        Fixture f;
        QSignalSpy told(&f.view, &DesignerPresenter::printersChanged);
        f.view.print();
        f.havePrinters("a offline, b error, c busy");
        QCOMPARE(f.view.connected().size(), 2);
        QCOMPARE(f.view.selected(), u"b"_s);
        f.view.setPrinterId(u"c"_s);
        QCOMPARE(f.view.destination(), u"c"_s);
        f.havePrinters("a ready, b ready, c offline");
        QCOMPARE(f.view.selected(), u"a"_s);
        const qsizetype changes = told.size();
        f.havePrinters("a busy, b ready, c offline");
        QCOMPARE(told.size(), changes); // nothing that is shown here
        f.havePrinters("a ready, c ready");
        QCOMPARE(f.view.selected(), u"c"_s); // the chosen one is back
        f.havePrinters("");
        QVERIFY(f.view.selected().isEmpty() && !f.view.canPrint());
        f.view.print();
        f.havePrinters("a offline");
        QVERIFY(f.sent(print) == 0 && !f.view.isPrinting());
        f.havePrinters(nullptr);
        QVERIFY(f.view.connected().isEmpty());
    }

    void printsOnceAndSaysSo()
    {
        Fixture f;
        f.havePrinters("كاشير ready");
        f.view.print();
        f.view.print();
        QVERIFY(f.view.isPrinting() && !f.view.canPrint());
        QCOMPARE(f.sent(print), 1);
        QCOMPARE(f.body(print)[u"printer"].toString(), u"كاشير"_s);
        QCOMPARE(f.body(print)[u"doc"].toObject(), f.view.doc().json());
        QVERIFY(f.answer(print));
        QVERIFY(f.view.canPrint());
        QCOMPARE(f.toast.text(), u"تم إرسال الورقة إلى «\u2068كاشير\u2069»"_s);
        f.view.print(); // the second half of a double click
        QVERIFY(!f.view.isPrinting());
        for (const PrintService::Answer &answer : {PrintService::Answer(R"({"error":"no"})"), PrintService::Answer()}) {
            f.toast.flash(QString());
            f.clock.advance(Commands::oneWish);
            f.view.print();
            QVERIFY(f.answer(print, answer));
            QVERIFY(!f.view.isPrinting());
            QCOMPARE(f.toast.text(), u"تعذر الطباعة. تحقق من اتصال الطابعة"_s);
        }
        auto gone = std::make_unique<DesignerPresenter>(f.commands, f.toast, 0);
        const AgentState state{.printers = {{.id = u"a"_s, .state = u"ready"_s}}};
        gone->show(&state);
        gone->print();
        gone.reset();
        QVERIFY(f.answer(print)); // its presenter is gone
    }

    void timeOnThePaper()
    {
        Parts app;
        const qint64 noon = QDateTime(QDate(2026, 1, 31), QTime(12, 5, 59)).toMSecsSinceEpoch();
        DesignerPresenter view(app.commands, app.toast, noon);
        QSignalSpy lines(view.preview(), &QAbstractItemModel::dataChanged);
        view.setNow(noon + 900);
        QVERIFY(lines.isEmpty());
        view.setNow(noon + 1000);
        QCOMPARE(lines.size(), 1);
        QCOMPARE(cells(*view.preview(), lines.first().at(0).toModelIndex().row(), "text"), u"2026-01-31 12:06"_s);
    }
};

ZEMRAK_TEST(designer, DesignerTest, QCoreApplication)
#include "tst_designer.moc"
