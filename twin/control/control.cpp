#include "twin/control/control.h"

#include "twin/printer/dialogue.h"

#include <QJsonDocument>

namespace zemrak::twin {

using Method = QHttpServerRequest::Method;
using Status = QHttpServerResponder::StatusCode;

const char Control::usage[]
    = "GET /status             model, knobs, what was received, asked and answered, and the receipts' list\n"
      "GET /knobs              how they stand\n"
      "PATCH /knobs            a JSON object of those to turn; with \"afterBytes\": N they turn when N more bytes "
      "have\n"
      "                        been printed\n"
      "GET /receipts/N.json    what was printed on a receipt; .png its picture, .bin its bytes\n"
      "DELETE /receipts        forgets receipts and counts\n"
      "POST /power             switches the printer off and on\n";

namespace {

QHttpServerResponse refusal(Status status, const QString &why)
{
    return QHttpServerResponse(QJsonObject{{QStringLiteral("error"), why}}, status);
}

/// A browser asks before it sends another site's request with this type, and gets no leave.
bool isJson(const QHttpServerRequest &request)
{
    return request.value("content-type").startsWith("application/json");
}

} // namespace

Control::Control(Printer &printer, Receipts &receipts)
    : m_printer(printer)
    , m_receipts(receipts)
{
    m_server.route(QStringLiteral("/status"), Method::Get, [this] { return status(); });
    m_server.route(
        QStringLiteral("/knobs"), Method::Get, [this] { return QHttpServerResponse(m_printer.knobs().toJson()); });
    m_server.route(
        QStringLiteral("/knobs"), Method::Patch, [this](const QHttpServerRequest &request) { return turn(request); });
    m_server.route(
        QStringLiteral("/receipts"), Method::Get, [this] { return QHttpServerResponse(m_receipts.summary()); });
    m_server.route(QStringLiteral("/receipts"), Method::Delete, [this] {
        m_receipts.clear();
        m_printer.journal().clear();
        return QHttpServerResponse(Status::NoContent);
    });
    m_server.route(
        QStringLiteral("/receipts/<arg>"), Method::Get, [this](const QString &name) { return receipt(name); });
    m_server.route(QStringLiteral("/power"), Method::Post, [this](const QHttpServerRequest &request) {
        if (!isJson(request))
            return refusal(Status::UnsupportedMediaType, QStringLiteral("the content type must be application/json"));
        m_printer.powerCycle();
        return QHttpServerResponse(Status::NoContent);
    });
}

quint16 Control::listen(quint16 port)
{
    return m_server.listen(QHostAddress::LocalHost, port);
}

QHttpServerResponse Control::status() const
{
    const Printer::Model &model = m_printer.model();
    const bool star = model.language == paper::Language::StarLine;
    return QHttpServerResponse(QJsonObject{
        {QStringLiteral("language"), star ? QStringLiteral("star") : QStringLiteral("escpos")},
        {QStringLiteral("dots"), model.dots},
        {QStringLiteral("knobs"), m_printer.knobs().toJson()},
        {QStringLiteral("offline"), dialogue::isOffline(m_printer.knobs())},
        {QStringLiteral("busy"), m_printer.isBusy()},
        {QStringLiteral("openLines"), m_printer.openLines()},
        {QStringLiteral("paperRows"), m_printer.currentRows()},
        {QStringLiteral("journal"), m_printer.journal().toJson()},
        {QStringLiteral("receiptCount"), m_receipts.count()},
        {QStringLiteral("receipts"), m_receipts.summary()},
    });
}

QHttpServerResponse Control::turn(const QHttpServerRequest &request)
{
    if (!isJson(request))
        return refusal(Status::UnsupportedMediaType, QStringLiteral("the content type must be application/json"));
    const QJsonDocument body = QJsonDocument::fromJson(request.body());
    if (!body.isObject())
        return refusal(Status::BadRequest, QStringLiteral("the body must be a JSON object"));
    QJsonObject change = body.object();
    const QJsonValue after = change.take(QStringLiteral("afterBytes"));
    QString problem;
    const std::optional<Knobs> knobs = m_printer.knobs().changed(change, &problem);
    if (!knobs)
        return refusal(Status::BadRequest, problem);
    if (after.isUndefined()) {
        m_printer.setKnobs(*knobs);
    } else if (!after.isDouble() || after.toDouble() < 0 || after.toDouble() > 1e12) {
        return refusal(Status::BadRequest, QStringLiteral("\"afterBytes\" must be a number of bytes"));
    } else if (!m_printer.setKnobsLater(static_cast<qint64>(after.toDouble()), change)) {
        return refusal(Status::TooManyRequests, QStringLiteral("too many changes wait already"));
    }
    return QHttpServerResponse(m_printer.knobs().toJson());
}

QHttpServerResponse Control::receipt(const QString &name) const
{
    const qsizetype dot = name.indexOf(u'.');
    const Receipts::Kept *kept = m_receipts.find(name.first(std::max<qsizetype>(0, dot)).toInt());
    const QString type = name.mid(dot + 1);
    if (kept != nullptr && type == QLatin1String("json"))
        return QHttpServerResponse(kept->list);
    if (kept != nullptr && type == QLatin1String("bin"))
        return QHttpServerResponse("application/octet-stream", kept->bytes);
    if (kept != nullptr && type == QLatin1String("png") && !kept->png.isEmpty())
        return QHttpServerResponse("image/png", kept->png);
    return refusal(Status::NotFound, QStringLiteral("there is no such receipt"));
}

} // namespace zemrak::twin
