// The designer without its page: what the paper shows, what is sent, and what a person must not lose.
#include "designer/symbolcheck.h"
#include "support/answeredcommands.h"
#include "support/testmain.h"
#include "support/wiredata.h"
#include "ui/presenters/designer/designerpresenter.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QString printPath = QStringLiteral("/admin/designer/print");

struct DesignerApplication : AnsweredCommands
{
    DesignerPresenter view{commands, toast, 0};

    void havePrinters(const QList<std::pair<QString, QString>> &printers) // name, state
    {
        AgentState state;
        for (const auto &[name, printerState] : printers)
            state.printers.append({.id = name, .name = name, .state = printerState});
        view.show(&state);
    }
    [[nodiscard]] qsizetype prints() const { return service.countTo(printPath); }
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
    if (line.kind == QLatin1String("rule"))
        return QStringLiteral("-");
    if (line.kind == QLatin1String("symbol"))
        return QStringLiteral("[%1 %2]").arg(line.symbol).arg(line.dots.width());
    const QString look = QLatin1String(line.centred ? "^" : "") + QLatin1String(line.strong ? "*" : "")
        + QLatin1String(line.large ? "#" : "");
    const QString text = line.label.isEmpty() ? line.text : line.label + u' ' + line.text;
    return look + (line.amount.isEmpty() ? text : text + QStringLiteral(" | ") + line.amount);
}

QString textAt(const QAbstractItemModel &model, int row, int role)
{
    return model.index(row, 0).data(role).toString();
}

} // namespace

class DesignerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paperLineByLine()
    {
        const QJsonObject shared = storedObject(QStringLiteral("designer/receipts.json"));
        const QJsonArray rows = shared.value(u"receipts").toArray();
        QVERIFY(rows.size() >= 5);
        for (const QJsonValue &row : rows) {
            const DesignerDoc doc = receipt(shared.value(u"bare").toObject(), row[u"doc"].toObject());
            QStringList lines;
            for (const PreviewLine &line : previewLines(doc, QStringLiteral("now")))
                lines.append(painted(line));
            QCOMPARE(lines, row[u"lines"].toVariant().toStringList());
        }
    }

    void editTouchesOneRow()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        view.loadSample();
        QSignalSpy rows(view.items(), &QAbstractItemModel::dataChanged);
        QSignalSpy lines(view.preview(), &QAbstractItemModel::dataChanged);
        QSignalSpy inserted(view.items(), &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(view.items(), &QAbstractItemModel::rowsRemoved);
        const QString second = textAt(*view.items(), 1, DesignerItemModel::IdRole);
        view.setItemName(second, QStringLiteral("علاج"));
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(rows.first().at(2).value<QList<int>>(), QList<int>{DesignerItemModel::NameRole});
        QCOMPARE(lines.size(), 1); // its line
        view.setItemPrice(second, QStringLiteral("100"));
        QCOMPARE(lines.size(), 1 + 4); // its amount, subtotal, VAT, total
        QCOMPARE(textAt(*view.preview(), lines.last().at(0).toModelIndex().row(), ReceiptPreviewModel::AmountRole),
            QStringLiteral("311.65 SAR"));
        view.setItemQty(QStringLiteral("gone"), QStringLiteral("9"));
        QVERIFY(inserted.isEmpty() && removed.isEmpty());
        view.addItem();
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(view.doc().items.last().qty, QStringLiteral("1"));
        view.removeItem(second);
        QCOMPARE(removed.size(), 1);
        QCOMPARE(view.doc().items.size(), 3);
    }

    void nothingTypedIsLost()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        view.loadSample(); // in place of the defaults, which nobody typed
        QVERIFY(!view.canUndo());
        DesignerDoc doc = view.doc();
        doc.customer = QStringLiteral("نورة");
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
        view.removeItem(textAt(*view.items(), 0, DesignerItemModel::IdRole));
        QVERIFY(view.canUndo());
        view.setItemQty(textAt(*view.items(), 0, DesignerItemModel::IdRole), QStringLiteral("5"));
        QVERIFY(!view.canUndo()); // it would take this back as well
        view.undo();
        QCOMPARE(view.doc().items.first().qty, QStringLiteral("5"));
    }

    void staysWithinWhatTheServiceTakes()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        DesignerDoc doc;
        doc.subtitle = QString(5000, u'س');
        doc.qrData = QString(612, u'x');
        doc.items.fill(DesignerItem::blank(), 299);
        for (DesignerItem &item : doc.items)
            item.id = QUuid::createUuid();
        view.setDoc(doc);
        QCOMPARE(view.doc().subtitle.size(), 2000);
        QCOMPARE(view.qrCounter(), QStringLiteral("612 / 600"));
        QVERIFY(view.qrProblemText().contains(QStringLiteral("12")));
        QVERIFY(view.canAddItem() && view.itemsProblem().isEmpty());
        view.addItem();
        QVERIFY(!view.canAddItem());
        QVERIFY(view.itemsProblem().contains(QStringLiteral("300")));
        view.addItem();
        QCOMPARE(view.doc().items.size(), 300);
        view.removeItem(textAt(*view.items(), 9, DesignerItemModel::IdRole));
        view.setItemName(textAt(*view.items(), 9, DesignerItemModel::IdRole), QString(2001, u'x'));
        QCOMPARE(view.doc().items.at(9).name.size(), 2000);
        QVERIFY(view.itemsProblem().contains(QStringLiteral("2000")));
        const auto told = [&view](const char *qty, const char *price, const char *vat) {
            view.setDoc({.items = {{.qty = QString::fromLatin1(qty), .price = QString::fromLatin1(price)}},
                .vatPercent = QString::fromLatin1(vat)});
            return view.itemsProblem();
        };
        QVERIFY(told("1e8", "1e5", "").isEmpty());
        QCOMPARE(told("1e8", "1e5", "15"), QStringLiteral("المبلغ أكبر من الحد المسموح للطباعة."));
        QCOMPARE(told("1e8", "1e8", ""), QStringLiteral("المبلغ أكبر من الحد المسموح للطباعة."));
        doc.barcodeFormat = QStringLiteral("ean8");
        view.setDoc(doc);
        QVERIFY(view.barcodeProblemText().isEmpty()); // none is printed
        doc.barcodeEnabled = true;
        view.setDoc(doc);
        QVERIFY(!view.barcodeProblemText().isEmpty());
    }

    void choosesAPrinterThatIsThere()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        QSignalSpy told(&view, &DesignerPresenter::printersChanged);
        const QString a = QStringLiteral("a"), b = QStringLiteral("b"), c = QStringLiteral("c");
        view.print();
        app.havePrinters({{a, QStringLiteral("offline")}, {b, QStringLiteral("error")}, {c, QStringLiteral("busy")}});
        QCOMPARE(view.connected().size(), 2);
        QCOMPARE(view.selected(), b);
        view.setPrinterId(c);
        QCOMPARE(view.destination(), c);
        app.havePrinters({{a, QStringLiteral("ready")}, {b, QStringLiteral("ready")}, {c, QStringLiteral("offline")}});
        QCOMPARE(view.selected(), a);
        const qsizetype changes = told.size();
        app.havePrinters({{a, QStringLiteral("busy")}, {b, QStringLiteral("ready")}, {c, QStringLiteral("offline")}});
        QCOMPARE(told.size(), changes); // nothing that is shown here
        app.havePrinters({{a, QStringLiteral("ready")}, {c, QStringLiteral("ready")}});
        QCOMPARE(view.selected(), c); // the chosen one is back
        app.havePrinters({});
        QVERIFY(view.selected().isEmpty() && !view.canPrint());
        view.print();
        app.havePrinters({{a, QStringLiteral("offline")}});
        QVERIFY(app.prints() == 0 && !view.isPrinting());
        view.show(nullptr);
        QVERIFY(view.connected().isEmpty());
    }

    void printsOnceAndSaysSo()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        app.havePrinters({{QStringLiteral("كاشير"), QStringLiteral("ready")}});
        app.service.holdBack = true;
        view.print();
        view.print();
        QVERIFY(view.isPrinting() && !view.canPrint());
        QCOMPARE(app.prints(), 1);
        const QJsonObject body = app.service.lastTo(printPath);
        QCOMPARE(body[QLatin1String("printer")].toString(), QStringLiteral("كاشير"));
        QCOMPARE(body[QLatin1String("doc")].toObject(), view.doc().json());
        QVERIFY(app.service.release(printPath, "{}"));
        QVERIFY(view.canPrint());
        QCOMPARE(app.toast.text(), QStringLiteral("تم إرسال الورقة إلى «\u2068كاشير\u2069»"));

        const QString failed = QStringLiteral("تعذر الطباعة. تحقق من اتصال الطابعة");
        view.print(); // the second half of a double click
        QVERIFY(!view.isPrinting());
        for (const PrintService::Answer &answer : {PrintService::Answer(R"({"error":"no"})"), PrintService::Answer()}) {
            app.toast.flash(QString());
            app.clock.advance(Commands::oneWish);
            view.print();
            QVERIFY(view.isPrinting());
            QVERIFY(app.service.release(printPath, answer));
            QVERIFY(!view.isPrinting());
            QCOMPARE(app.toast.text(), failed);
        }

        auto gone = std::make_unique<DesignerPresenter>(app.commands, app.toast, 0);
        const AgentState state{.printers = {{.id = QStringLiteral("a"), .state = QStringLiteral("ready")}}};
        gone->show(&state);
        app.clock.advance(Commands::oneWish);
        gone->print();
        gone.reset();
        QVERIFY(app.service.release(printPath, "{}")); // its presenter is gone
    }

    void timeOnThePaper()
    {
        AnsweredCommands app;
        const QDateTime noon(QDate(2026, 1, 31), QTime(12, 5, 59));
        DesignerPresenter view(app.commands, app.toast, noon.toMSecsSinceEpoch());
        QSignalSpy lines(view.preview(), &QAbstractItemModel::dataChanged);
        view.setNow(noon.toMSecsSinceEpoch() + 900);
        QVERIFY(lines.isEmpty());
        view.setNow(noon.toMSecsSinceEpoch() + 1000);
        QCOMPARE(lines.size(), 1);
        QCOMPARE(textAt(*view.preview(), lines.first().at(0).toModelIndex().row(), ReceiptPreviewModel::TextRole),
            QStringLiteral("2026-01-31 12:06"));
    }

    void keystrokeWithManyItems()
    {
        DesignerApplication app;
        DesignerPresenter &view = app.view;
        DesignerDoc doc = DesignerDoc::sample();
        for (int i = 3; i < 300; ++i)
            doc.items.append({.name = QStringLiteral("صنف"), .qty = QStringLiteral("2"), .price = QString::number(i)});
        view.setDoc(doc);
        const QString last = textAt(*view.items(), 299, DesignerItemModel::IdRole);
        QBENCHMARK
        {
            view.setItemPrice(
                last, view.doc().items.last().price == QLatin1String("1") ? QStringLiteral("12") : QStringLiteral("1"));
        }
        QCOMPARE(view.preview()->count(), 600 + 22);
    }
};

ZEMRAK_TEST(designer, DesignerTest, QCoreApplication)
#include "tst_designer.moc"
