#include "twin/window/paperview.h"

#include "twin/printer/printer.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextOption>

namespace zemrak::twin {

namespace {

constexpr int refreshMs = 40;
constexpr int gap = 24;
constexpr int border = 16; // white beside the dots, as the paper is wider than the head
const QColor paperColor(0xffffff);

} // namespace

PaperView::PaperView(Printer &printer, const Look &look, const QString &emptyText, QWidget *parent)
    : QWidget(parent)
    , m_printer(printer)
    , m_look(look)
    , m_emptyText(emptyText)
{
    setObjectName(QStringLiteral("well"));
    setAccessibleName(QStringLiteral("الورق"));
    m_refresh.setInterval(refreshMs);
    m_refresh.setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, &PaperView::takePaper);
    connect(&printer, &Printer::paperMoved, this, [this] {
        if (!m_refresh.isActive())
            m_refresh.start();
    });
    connect(&printer, &Printer::receiptFinished, this, [this](const paper::Receipt &receipt) {
        if (receipt.paper.isEmpty())
            return;
        m_receipts.append(receipt.paper.toImage());
        if (m_receipts.size() > view::mostReceipts)
            m_receipts.removeFirst();
        m_current = {};
        arrange();
    });
}

void PaperView::clear()
{
    m_receipts.clear();
    m_current = {};
    arrange();
}

void PaperView::takePaper()
{
    m_current = m_printer.currentRows() > 0 ? m_printer.current().paper.toImage() : QImage();
    arrange();
}

QSize PaperView::shownSize(const QImage &paper) const
{
    const int room = width() - 2 * gap - 2 * border;
    const int across = std::max(32, std::min(paper.width(), room));
    return {across, std::max(1, paper.height() * across / std::max(1, paper.width()))};
}

void PaperView::arrange()
{
    int height = gap;
    for (const QImage &paper : std::as_const(m_receipts))
        height += shownSize(paper).height() + 2 * border + gap;
    if (!m_current.isNull())
        height += shownSize(m_current).height() + border + gap;
    setMinimumHeight(height);
    update();
    Q_EMIT grown();
}

void PaperView::resizeEvent(QResizeEvent *)
{
    arrange();
}

void PaperView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.ground);
    if (m_receipts.isEmpty() && m_current.isNull()) {
        painter.setPen(m_look.muted);
        QTextOption option(Qt::AlignCenter);
        option.setTextDirection(Qt::RightToLeft);
        painter.drawText(QRectF(rect().adjusted(gap, gap, -gap, -gap)), m_emptyText, option);
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    int top = gap;
    const auto draw = [&](const QImage &paper, bool cut) {
        const QSize size = shownSize(paper);
        const QRect sheet((width() - size.width()) / 2 - border, top, size.width() + 2 * border,
            size.height() + (cut ? 2 : 1) * border);
        if (sheet.intersects(event->rect())) {
            painter.fillRect(sheet, paperColor);
            painter.setPen(m_look.border);
            painter.drawRect(sheet.adjusted(0, 0, -1, -1));
            painter.drawImage(QRect(sheet.topLeft() + QPoint(border, border), size), paper);
        }
        top = sheet.bottom() + 1 + gap;
    };
    for (const QImage &paper : std::as_const(m_receipts))
        draw(paper, true);
    if (!m_current.isNull())
        draw(m_current, false);
}

} // namespace zemrak::twin
