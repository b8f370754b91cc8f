// Whatever bytes a printer gets: its paper, its lists and its time stay within their bounds, and it makes no difference
// in which pieces they come.

#include "fuzz/require.h"
#include "twin/paper/interpreter.h"

#include <QCoreApplication>

#include <cstdint>

using namespace zemrak::paper;
using namespace zemrak::fuzz;

namespace {

/// What came out, in short; the receipts themselves are not kept.
class Outcome : public Listener
{
public:
    void finished(Receipt receipt) override
    {
        require(receipt.paper.height() <= limits::rows, "the paper has an end");
        require(receipt.printed.size() <= limits::events, "what is printed is bounded");
        require(receipt.problems.size() <= limits::problems, "problems are bounded");
        require(receipt.bytes.size() <= receipt.size, "its bytes are its own");
        for (const Problem &problem : receipt.problems)
            require(problem.offset >= 0 && problem.offset <= receipt.size, "a problem lies within the bytes");
        for (const Printed &event : receipt.printed)
            require(event.place.top() >= 0 && event.place.top() <= limits::rows, "what is printed is on the paper");
        ++receipts;
        rows += receipt.paper.height();
        events += receipt.printed.size();
        problems += receipt.problems.size();
    }
    void asked(Request, QByteArrayView parameters) override { questions += 1 + parameters.size(); }
    bool operator==(const Outcome &other) const
    {
        return receipts == other.receipts && rows == other.rows && events == other.events && problems == other.problems
            && questions == other.questions;
    }

private:
    qint64 receipts = 0;
    qint64 rows = 0;
    qint64 events = 0;
    qint64 problems = 0;
    qint64 questions = 0;
};

Outcome print(Language language, QByteArrayView bytes, qsizetype piece)
{
    Outcome outcome;
    Interpreter interpreter(language, 384, outcome);
    for (qsizetype place = 0; place < bytes.size(); place += piece)
        interpreter.take(bytes.sliced(place, std::min(piece, bytes.size() - place)));
    interpreter.endJob();
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 1;
    static char *argv[] = {const_cast<char *>("paper"), nullptr};
    static const QCoreApplication application(argc, argv);
    if (size < 1)
        return 0;
    // The first byte chooses the language and the pieces.
    const Language language = (data[0] & 1) != 0 ? Language::StarLine : Language::EscPos;
    const QByteArrayView bytes(data + 1, static_cast<qsizetype>(size - 1));
    const qsizetype whole = std::max<qsizetype>(1, bytes.size());
    require(print(language, bytes, whole) == print(language, bytes, 1 + (data[0] >> 1)), "pieces make no difference");
    return 0;
}
