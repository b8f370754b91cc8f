#pragma once

#include "host/printservice.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QMetaObject>
#include <QPointer>

#include <algorithm>

namespace zemrak::test {

/// A print service in this program: it keeps the requests it is given and answers them in a later turn of the event
/// loop, or when the test says so.
class AnsweringService final : public PrintService
{
public:
    struct Held
    {
        QString path;
        QPointer<QObject> context;
        Answered done;
    };
    struct Request
    {
        QString path;
        QJsonObject body;
    };

    void get(const QString &path, std::chrono::milliseconds, QObject *context, Answered done) override
    {
        take({path, {}}, context, std::move(done));
    }
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds, QObject *context,
        Answered done) override
    {
        take({path, body.value_or(QJsonObject())}, context, std::move(done));
    }

    [[nodiscard]] QList<QJsonObject> bodiesTo(const QString &path) const
    {
        QList<QJsonObject> bodies;
        for (const Request &request : requests) {
            if (request.path == path)
                bodies.append(request.body);
        }
        return bodies;
    }
    [[nodiscard]] qsizetype countTo(const QString &path) const { return bodiesTo(path).size(); }
    [[nodiscard]] QJsonObject lastTo(const QString &path) const { return bodiesTo(path).value(countTo(path) - 1); }

    /// Answers the oldest request to `path` that was held back; false: there is none. No body: it failed.
    bool release(const QString &path, const Answer &body)
    {
        for (qsizetype i = 0; i < held.size(); ++i) {
            if (held.at(i).path != path)
                continue;
            const Held request = held.takeAt(i);
            if (request.context)
                request.done(body);
            return true;
        }
        return false;
    }

    [[nodiscard]] qsizetype heldTo(const QString &path) const { return std::ranges::count(held, path, &Held::path); }

    QList<Request> requests;
    QByteArray answer = "{}"; ///< to all that are not held back
    bool holdBack = false;

private:
    void take(const Request &request, QObject *context, Answered done)
    {
        requests.append(request);
        if (holdBack && !request.path.startsWith(QLatin1String("/admin/state")))
            held.append({request.path, context, std::move(done)});
        else if (done)
            QMetaObject::invokeMethod(
                context, [done = std::move(done), body = answer] { done(body); }, Qt::QueuedConnection);
    }

    QList<Held> held;
};

} // namespace zemrak::test
