#include "ui/presenters/designer/designerpresenter.h"

#include "designer/symbolcheck.h"
#include "health/vocabulary.h"
#include "ui/presenters/text/mixedtext.h"

#include <QDateTime>
#include <QMetaProperty>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace zemrak {

namespace {

QVariantMap option(const QVariant &value, const QString &label)
{
    return {{QStringLiteral("value"), value}, {QStringLiteral("label"), label}};
}

QString valueOf(const QVariant &choice)
{
    return choice.toMap().value(QStringLiteral("value")).toString();
}

void shorten(QString &text)
{
    if (text.size() > DesignerPresenter::maximumLength)
        text.truncate(DesignerPresenter::maximumLength);
}

// To the lengths that the service takes. What else keeps a receipt from being printed is said beside it.
void shorten(DesignerDoc &doc)
{
    const QMetaObject &fields = DesignerDoc::staticMetaObject;
    for (int i = 0; i < fields.propertyCount(); ++i) {
        QVariant value = fields.property(i).readOnGadget(&doc);
        if (value.userType() != QMetaType::QString || value.toString().size() <= DesignerPresenter::maximumLength)
            continue;
        fields.property(i).writeOnGadget(&doc, value.toString().left(DesignerPresenter::maximumLength));
    }
    if (doc.items.size() > DesignerPresenter::maximumItems)
        doc.items.resize(DesignerPresenter::maximumItems);
    for (DesignerItem &item : doc.items) {
        shorten(item.name);
        shorten(item.qty);
        shorten(item.price);
    }
}

bool isFull(const DesignerItem &item)
{
    return std::max({item.name.size(), item.qty.size(), item.price.size()}) >= DesignerPresenter::maximumLength;
}

QString itemsProblemOf(const DesignerDoc &doc)
{
    const DesignerTotals totals = doc.totals();
    if (std::max(totals.subtotal, totals.total) > DesignerPresenter::maximumAmount)
        return QStringLiteral("المبلغ أكبر من الحد المسموح للطباعة.");
    const QList<DesignerItem> &items = doc.items;
    if (items.size() >= DesignerPresenter::maximumItems)
        return QStringLiteral("وصلت القائمة إلى أقصى حد لها: %1 منتج.").arg(DesignerPresenter::maximumItems);
    if (std::ranges::any_of(items, isFull))
        return QStringLiteral("وصل أحد حقول المنتجات إلى أقصى طول له: %1 حرف.").arg(DesignerPresenter::maximumLength);
    return {};
}

// The same to a person, whatever its items' identities.
bool readsLike(const DesignerDoc &doc, const DesignerDoc &other)
{
    return doc.json() == other.json();
}

} // namespace

DesignerPresenter::DesignerPresenter(Commands &commands, Toast &messages, qint64 now, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
    , m_messages(messages)
{
    connect(this, &DesignerPresenter::printersChanged, this, &DesignerPresenter::canPrintChanged);
    connect(this, &DesignerPresenter::printingChanged, this, &DesignerPresenter::canPrintChanged);
    m_items.show(m_doc.items);
    setNow(now);
}

void DesignerPresenter::show(const AgentState *state)
{
    QVariantList now;
    if (state) {
        for (const PrinterInfo &printer : state->printers) {
            if (isConnected(printer))
                now.append(option(printer.id, displayName(printer)));
        }
    }
    if (m_connected == now)
        return;
    m_connected = now;
    Q_EMIT printersChanged();
}

QString DesignerPresenter::selected() const
{
    const bool there
        = std::ranges::any_of(m_connected, [this](const QVariant &choice) { return valueOf(choice) == m_printerId; });
    return there ? m_printerId : m_connected.isEmpty() ? QString() : valueOf(m_connected.first());
}

QString DesignerPresenter::destination() const
{
    const QString id = selected();
    for (const QVariant &choice : m_connected) {
        if (valueOf(choice) == id)
            return choice.toMap().value(QStringLiteral("label")).toString();
    }
    return {};
}

void DesignerPresenter::setPrinterId(const QString &id)
{
    if (std::exchange(m_printerId, id) != id)
        Q_EMIT printersChanged();
}

void DesignerPresenter::setDoc(const DesignerDoc &doc)
{
    DesignerDoc taken = doc;
    shorten(taken);
    if (taken == m_doc)
        return;
    m_before.reset(); // undoing that would lose what has been typed since
    showDoc(taken);
}

void DesignerPresenter::showDoc(const DesignerDoc &doc)
{
    m_doc = doc;
    m_items.show(m_doc.items);
    m_itemsProblem = itemsProblemOf(m_doc);
    showPaper();
    Q_EMIT docChanged();
}

void DesignerPresenter::showPaper()
{
    m_preview.setRows(previewLines(m_doc, m_stamp));
}

void DesignerPresenter::setNow(qint64 now)
{
    const QString stamp
        = QDateTime::fromMSecsSinceEpoch(now).toString(QStringLiteral("yyyy-MM-dd HH:mm")); // as it is printed
    if (std::exchange(m_stamp, stamp) != stamp)
        showPaper();
}

void DesignerPresenter::replaceBy(const DesignerDoc &doc)
{
    const bool typed = !readsLike(m_doc, DesignerDoc()) && !readsLike(m_doc, DesignerDoc::sample());
    if (typed) // else what was typed before that is still to be brought back
        m_before = m_doc;
    showDoc(doc);
}

void DesignerPresenter::loadSample()
{
    replaceBy(DesignerDoc::sample());
}

void DesignerPresenter::reset()
{
    replaceBy(DesignerDoc());
}

void DesignerPresenter::undo()
{
    if (const std::optional<DesignerDoc> before = std::exchange(m_before, std::nullopt))
        showDoc(*before);
}

void DesignerPresenter::addItem()
{
    DesignerDoc doc = m_doc;
    if (canAddItem())
        doc.items.append(DesignerItem::blank());
    setDoc(doc);
}

void DesignerPresenter::removeItem(const QString &itemId)
{
    DesignerDoc doc = m_doc;
    const QUuid id(itemId);
    if (doc.items.removeIf([&id](const DesignerItem &item) { return item.id == id; }) == 0)
        return;
    m_before = m_doc;
    showDoc(doc);
}

void DesignerPresenter::setItemText(const QString &itemId, QString DesignerItem::*field, const QString &text)
{
    DesignerDoc doc = m_doc;
    const auto item = std::ranges::find(doc.items, QUuid(itemId), &DesignerItem::id);
    if (item == doc.items.end())
        return;
    (*item).*field = text;
    setDoc(doc);
}

void DesignerPresenter::setItemName(const QString &itemId, const QString &name)
{
    setItemText(itemId, &DesignerItem::name, name);
}

void DesignerPresenter::setItemQty(const QString &itemId, const QString &qty)
{
    setItemText(itemId, &DesignerItem::qty, qty);
}

void DesignerPresenter::setItemPrice(const QString &itemId, const QString &price)
{
    setItemText(itemId, &DesignerItem::price, price);
}

void DesignerPresenter::print()
{
    if (!canPrint())
        return;
    const bool begun
        = m_commands.printDesigner(selected(), m_doc.json(), [self = QPointer(this), name = destination()](bool ok) {
              if (!self)
                  return;
              self->setPrinting(false);
              self->m_messages.flash(ok ? QStringLiteral("تم إرسال الورقة إلى «%1»").arg(isolatedName(name))
                                        : QStringLiteral("تعذر الطباعة. تحقق من اتصال الطابعة"));
          });
    if (begun)
        setPrinting(true);
}

void DesignerPresenter::setPrinting(bool printing)
{
    m_printing = printing;
    Q_EMIT printingChanged();
}

int DesignerPresenter::paperDots() const
{
    return dotsOfPaper(m_doc.paperWidthMm);
}

QString DesignerPresenter::qrCounter() const
{
    return QStringLiteral("%1 / %2").arg(m_doc.qrData.size()).arg(qrMaximumLength);
}

QString DesignerPresenter::qrProblemText() const
{
    return m_doc.qrEnabled || m_doc.qrData.size() > qrMaximumLength ? qrProblem(m_doc.qrData) : QString();
}

QString DesignerPresenter::barcodeProblemText() const
{
    return m_doc.barcodeEnabled ? barcodeProblem(m_doc.barcodeFormat, m_doc.barcodeData, m_doc.paperWidthMm)
                                : QString();
}

QVariantList DesignerPresenter::paperWidths() const
{
    return {
        option(58, QStringLiteral("58 مم")), option(72, QStringLiteral("72 مم")), option(80, QStringLiteral("80 مم"))};
}

QVariantList DesignerPresenter::qrSizes() const
{
    return {option(4, QStringLiteral("صغير")), option(6, QStringLiteral("متوسط")), option(8, QStringLiteral("كبير")),
        option(10, QStringLiteral("كبير جدًا"))};
}

QVariantList DesignerPresenter::barcodeFormats() const
{
    return {option(QStringLiteral("code128"), QStringLiteral("Code 128")),
        option(QStringLiteral("code39"), QStringLiteral("Code 39")),
        option(QStringLiteral("ean13"), QStringLiteral("EAN-13")),
        option(QStringLiteral("ean8"), QStringLiteral("EAN-8")),
        option(QStringLiteral("upca"), QStringLiteral("UPC-A")), option(QStringLiteral("itf"), QStringLiteral("ITF"))};
}

QString DesignerPresenter::fullFieldText() const
{
    return QStringLiteral("وصل هذا الحقل إلى أقصى طول له: %1 حرف.").arg(maximumLength);
}

} // namespace zemrak
