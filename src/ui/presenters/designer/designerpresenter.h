#pragma once

#include "app/commands.h"
#include "app/toast.h"
#include "designer/designerdoc.h"
#include "model/agentstate.h"
#include "ui/presenters/designer/designeritemmodel.h"
#include "ui/presenters/designer/receiptpreviewmodel.h"

#include <QObject>
#include <QVariant>

#include <optional>

namespace zemrak {

/// The page that designs a receipt: the document, its paper, and the printer it goes to. It outlives the window, so
/// that what was typed is there again in the next one, and a print under way is not begun anew. Main thread only.
class DesignerPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::DesignerDoc __doc READ doc WRITE setDoc NOTIFY docChanged)
    Q_PROPERTY(QString __printerId READ printerId WRITE setPrinterId NOTIFY printersChanged)
    Q_PROPERTY(bool __printing READ isPrinting NOTIFY printingChanged)
    Q_PROPERTY(QVariantList connected READ connected NOTIFY printersChanged)
    Q_PROPERTY(QString selected READ selected NOTIFY printersChanged)
    Q_PROPERTY(QString destination READ destination NOTIFY printersChanged)
    Q_PROPERTY(bool canPrint READ canPrint NOTIFY canPrintChanged)
    Q_PROPERTY(zemrak::DesignerItemModel *items READ items CONSTANT)
    Q_PROPERTY(zemrak::ReceiptPreviewModel *preview READ preview CONSTANT)
    Q_PROPERTY(int paperDots READ paperDots NOTIFY docChanged)
    Q_PROPERTY(QString qrCounter READ qrCounter NOTIFY docChanged)
    Q_PROPERTY(QString qrProblem READ qrProblemText NOTIFY docChanged)
    Q_PROPERTY(QString barcodeProblem READ barcodeProblemText NOTIFY docChanged)
    Q_PROPERTY(QString itemsProblem READ itemsProblem NOTIFY docChanged)
    Q_PROPERTY(bool canAddItem READ canAddItem NOTIFY docChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY docChanged)
    Q_PROPERTY(QVariantList paperWidths READ paperWidths CONSTANT)
    Q_PROPERTY(QVariantList qrSizes READ qrSizes CONSTANT)
    Q_PROPERTY(QVariantList barcodeFormats READ barcodeFormats CONSTANT)
    Q_PROPERTY(int longestText READ longestText CONSTANT)
    Q_PROPERTY(QString fullFieldText READ fullFieldText CONSTANT)

public:
    // What the service takes.
    static constexpr qsizetype maximumItems = 300;
    static constexpr qsizetype maximumLength = 2000;
    static constexpr double maximumAmount = 1e13; ///< of the subtotal and of the total

    /// `commands` and `messages` outlive this object; `now` is in milliseconds since 1970-01-01 UTC.
    DesignerPresenter(Commands &commands, Toast &messages, qint64 now, QObject *parent = nullptr);

    /// `state` null: the service does not answer.
    void show(const AgentState *state);

    /// Texts longer than maximumLength, and items beyond maximumItems, are cut off on the way in.
    [[nodiscard]] const DesignerDoc &doc() const { return m_doc; }
    void setDoc(const DesignerDoc &doc);
    /// The printer that was chosen; it need not be there.
    [[nodiscard]] QString printerId() const { return m_printerId; }
    void setPrinterId(const QString &id);
    [[nodiscard]] bool isPrinting() const { return m_printing; }

    /// The printers that can be reached, as {value: id, label: name} objects in the service's order.
    [[nodiscard]] QVariantList connected() const { return m_connected; }
    /// The id of the printer to print on: the chosen one while it is connected, else the first; empty: none is.
    [[nodiscard]] QString selected() const;
    /// Its name; empty: there is none.
    [[nodiscard]] QString destination() const;
    [[nodiscard]] bool canPrint() const { return !m_printing && !m_connected.isEmpty(); }

    [[nodiscard]] DesignerItemModel *items() { return &m_items; }
    [[nodiscard]] ReceiptPreviewModel *preview() { return &m_preview; }
    /// What the paper holds side by side.
    [[nodiscard]] int paperDots() const;
    [[nodiscard]] QString qrCounter() const;
    // One line of what a person should know before printing; empty: nothing.
    [[nodiscard]] QString qrProblemText() const;
    [[nodiscard]] QString barcodeProblemText() const;
    [[nodiscard]] QString itemsProblem() const { return m_itemsProblem; }
    [[nodiscard]] bool canAddItem() const { return m_doc.items.size() < maximumItems; }
    /// What had been typed was replaced or removed, and nothing has been typed since.
    [[nodiscard]] bool canUndo() const { return m_before.has_value(); }

    /// {value, label} objects.
    [[nodiscard]] QVariantList paperWidths() const;
    [[nodiscard]] QVariantList qrSizes() const;
    [[nodiscard]] QVariantList barcodeFormats() const;
    [[nodiscard]] int longestText() const { return int(maximumLength); }
    [[nodiscard]] QString fullFieldText() const;

    Q_INVOKABLE void loadSample();
    Q_INVOKABLE void reset();
    Q_INVOKABLE void undo();

    /// Appends an empty item, unless there are too many.
    Q_INVOKABLE void addItem();
    // `itemId` as in the rows of items(); one that is gone is no matter.
    Q_INVOKABLE void removeItem(const QString &itemId);
    Q_INVOKABLE void setItemName(const QString &itemId, const QString &name);
    Q_INVOKABLE void setItemQty(const QString &itemId, const QString &qty);
    Q_INVOKABLE void setItemPrice(const QString &itemId, const QString &price);

    /// Sends the document to the selected printer, and tells by a short message how that went. Nothing happens without
    /// a printer, while a print is under way or on the second half of a double click.
    Q_INVOKABLE void print();

    /// The time that the paper shows, as in the constructor.
    void setNow(qint64 now);

Q_SIGNALS:
    void docChanged();
    void printersChanged();
    void printingChanged();
    void canPrintChanged();

private:
    void setPrinting(bool printing);
    void replaceBy(const DesignerDoc &doc);
    void showDoc(const DesignerDoc &doc);
    void showPaper();
    void setItemText(const QString &itemId, QString DesignerItem::*field, const QString &text);

    Commands &m_commands;
    Toast &m_messages;
    DesignerDoc m_doc;
    std::optional<DesignerDoc> m_before; ///< what undo() brings back
    DesignerItemModel m_items;
    ReceiptPreviewModel m_preview;
    QString m_itemsProblem;
    QString m_stamp;
    QString m_printerId;
    QVariantList m_connected;
    bool m_printing = false;
};

} // namespace zemrak
