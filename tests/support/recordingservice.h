#pragma once

#include "host/printservice.h"
#include "host/servicecommands.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <algorithm>

namespace zemrak::test {

/// Keeps the requests it is given. A test answers each when it likes, or has all that come answered with `reply` in a
/// later turn of the event loop.
class RecordingService final : public PrintService
{
public:
    struct Request
    {
        QByteArray method;
        QString path;
        std::optional<QJsonObject> body;
        std::chrono::milliseconds timeout;
        QPointer<QObject> context;
        Answered done;
        bool isAnswered = false;

        void answer(const Answer &answer) const
        {
            const Answered answered = done; // what it brings about may be the next request, which moves this one
            if (context && answered)
                answered(answer);
        }
    };

    void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override
    {
        take({"GET", path, std::nullopt, timeout, context, std::move(done)});
    }
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds timeout,
        QObject *context, Answered done) override
    {
        take({"POST", path, body, timeout, context, std::move(done)});
    }

    /// Answers the oldest request to `path` that was not answered yet; false: there is none.
    bool release(const QString &path, const Answer &answer)
    {
        const auto waits = [&path](const Request &each) { return each.path == path && !each.isAnswered; };
        const auto found = std::ranges::find_if(requests, waits);
        if (found == requests.end())
            return false;
        found->isAnswered = true;
        found->answer(answer);
        return true;
    }

    [[nodiscard]] QList<QJsonObject> bodiesTo(const QString &path) const
    {
        QList<QJsonObject> bodies;
        for (const Request &request : requests) {
            if (request.path == path)
                bodies.append(request.body.value_or(QJsonObject()));
        }
        return bodies;
    }
    [[nodiscard]] qsizetype countTo(const QString &path) const { return bodiesTo(path).size(); }
    [[nodiscard]] QJsonObject lastTo(const QString &path) const { return bodiesTo(path).value(countTo(path) - 1); }

    QList<Request> requests;
    std::optional<QByteArray> reply; ///< none: requests wait for the test

private:
    void take(Request request)
    {
        request.isAnswered = reply.has_value();
        requests.append(request);
        if (reply && request.context)
            QMetaObject::invokeMethod(
                request.context, [request, body = *reply] { request.answer(body); }, Qt::QueuedConnection);
    }
};

/// Keeps the commands it is given; a test ends them when it likes.
class RecordingCommands final : public ServiceCommands
{
public:
    struct Command
    {
        QStringList arguments;
        QPointer<QObject> context;
        Ended done;

        void end(int status) const
        {
            if (context)
                done(status);
        }
    };

    void runOnce(const QStringList &arguments, QObject *context, Ended done) override
    {
        commands.append({arguments, context, std::move(done)});
    }

    QList<Command> commands;
};

} // namespace zemrak::test
