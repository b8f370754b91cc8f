#pragma once

#include "sheet.h"
#include "twin/twin.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

namespace zemrak::test {

using namespace zemrak::twin;

/// A twin on free ports with a folder of its own.
struct Shop
{
    QTemporaryDir folder;
    std::unique_ptr<Twin> twin;
    QNetworkAccessManager network;

    explicit Shop(const QStringList &settings = {}, paper::Language language = paper::Language::EscPos)
    {
        Options options;
        options.language = language;
        options.port = 0;
        options.lpdPort = 0;
        options.controlPort = 0;
        options.serial = true;
        options.folder = folder.filePath(QStringLiteral("out"));
        QString problem;
        for (const QString &setting : settings)
            options.knobs = options.knobs.changed(setting, &problem).value();
        twin = std::make_unique<Twin>(options);
        problem = twin->open();
        if (!problem.isEmpty())
            qFatal("%s", qPrintable(problem));
    }

    Printer &printer() { return twin->printer(); }
    Journal &journal() { return printer().journal(); }
    QString place(const char *name) { return twin->places().value(QLatin1String(name)).toVariant().toString(); }
    void turn(const char *assignment)
    {
        QString problem;
        printer().setKnobs(printer().knobs().changed(QString::fromLatin1(assignment), &problem).value());
    }

    std::unique_ptr<QTcpSocket> connect(const char *port = "port")
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), place(port).toUShort());
        return socket;
    }

    /// @returns the status and the body
    std::pair<int, QJsonObject> http(const char *verb, const QString &path, const QByteArray &body = {})
    {
        QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(place("controlPort"), path)));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
        const std::unique_ptr<QNetworkReply> reply(network.sendCustomRequest(request, verb, body));
        if (!QTest::qWaitFor([&] { return reply->isFinished(); }))
            return {};
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
            QJsonDocument::fromJson(reply->readAll()).object()};
    }
    int receipts() { return twin->receipts().count(); }
    QStringList lines(int number)
    {
        QStringList all;
        const Receipts::Kept *kept = twin->receipts().find(number);
        const QJsonArray printed
            = kept == nullptr ? QJsonArray() : kept->list.value(QLatin1String("printed")).toArray();
        for (const QJsonValue &event : printed)
            if (event[QLatin1String("kind")] == QLatin1String("text"))
                all.append(event[QLatin1String("text")].toString());
        return all;
    }
};

/// What the other side has answered since, once it is that long.
inline QByteArray answers(QTcpSocket &socket, qsizetype size)
{
    QByteArray bytes;
    (void)QTest::qWaitFor([&] {
        bytes += socket.readAll();
        return bytes.size() >= size;
    });
    return bytes.toHex();
}

} // namespace zemrak::test
