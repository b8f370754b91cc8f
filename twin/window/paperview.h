#pragma once

#include "twin/window/look.h"

#include <QImage>
#include <QList>
#include <QTimer>
#include <QWidget>

namespace zemrak::twin {

class Printer;
namespace view {
inline constexpr qsizetype mostReceipts = 30;
}

/// The paper as it comes: receipts below each other, the one that is being printed last.
/// Shrunk where its place is narrower.
class PaperView : public QWidget
{
    Q_OBJECT

public:
    PaperView(Printer &printer, const Look &look, const QString &emptyText, QWidget *parent);
    void clear();

Q_SIGNALS:
    /// The paper has become longer, or another receipt has begun.
    void grown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void takePaper();
    void arrange();
    [[nodiscard]] QSize shownSize(const QImage &paper) const;

    Printer &m_printer;
    const Look &m_look;
    QString m_emptyText;
    QList<QImage> m_receipts;
    QImage m_current;
    QTimer m_refresh; ///< many moves of the paper are one picture
};

} // namespace zemrak::twin
