#include "textrender/framechannel.h"
#include "textrender/textpicture.h"

#include <QBuffer>
#include <QCommandLineParser>
#include <QGuiApplication>

#include <sys/resource.h>

#include <cstdio>

using namespace zemrak;

namespace {

constexpr int statusUsage = 64;
constexpr int statusBadInput = 65;
constexpr int statusNoReader = 74;

// Far above what the longest receipt takes; a text that keeps the layout busy any longer ends the program.
constexpr rlim_t processorSeconds = 20;

int fail(int status, const QString &reason)
{
    std::fprintf(stderr, "textrender: %s\n", qUtf8Printable(reason));
    return status;
}

/// A binary PBM, one bit for each dot, black = 1; empty when the picture would be too tall.
QByteArray picture(const LineOfPaper &line)
{
    const QImage image = drawTextPicture(line);
    QBuffer bytes;
    if (!image.isNull() && bytes.open(QIODevice::WriteOnly))
        image.save(&bytes, "PBM");
    return bytes.data();
}

QByteArray answer(const QByteArray &request)
{
    QString problem;
    const std::optional<LineOfPaper> line = LineOfPaper::fromJson(request, &problem);
    if (!line)
        return "error: " + problem.toUtf8();
    const QByteArray bytes = picture(*line);
    return bytes.isEmpty() ? QByteArrayLiteral("error: the text is too tall") : bytes;
}

/// What Qt remarks about the session (a runtime folder that is missing, say) is no word about the text.
void onlyWhatStopsUs(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "textrender: %s\n", qUtf8Printable(message));
}

int serve(QFile *in, QFile *out)
{
    FrameChannel channel(in, out);
    while (const std::optional<QByteArray> request = channel.read()) {
        if (!channel.write(answer(*request)))
            return fail(statusNoReader, QStringLiteral("nobody reads the pictures"));
    }
    return channel.end() == FrameChannel::End::Clean
        ? 0
        : fail(statusBadInput, QStringLiteral("the input is not a sequence of requests"));
}

const char description[]
    = "Draws text as a one-bit picture (binary PBM) for a receipt printer.\n\n"
      "With --serve many lines are drawn by one process. Each request on standard input and each answer on standard\n"
      "output stands behind its length in four bytes, the largest first. A request is a JSON object: \"text\" and\n"
      "\"width\" (dots, a multiple of 8), and as wanted \"opposite\" (text for the other edge), \"align\" (\"left\",\n"
      "\"center\", \"right\"), \"bold\", \"underline\", \"invert\" and \"size\" ([across, down], 1 to 8 each).\n"
      "An answer is a binary PBM, or a line that begins with \"error: \". Answers come in the order of the requests.";

} // namespace

int main(int argc, char **argv)
{
    const rlimit limit{processorSeconds, processorSeconds};
    setrlimit(RLIMIT_CPU, &limit);
    qInstallMessageHandler(onlyWhatStopsUs);
    // No display, and none of what a desktop session would have a program load.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    qunsetenv("QT_IM_MODULE");
    QGuiApplication::setDesktopSettingsAware(false);
    const QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromUtf8(description));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("text"), QStringLiteral("The text; standard input when left out."));
    const QCommandLineOption serveOption(QStringLiteral("serve"), QStringLiteral("Draw what standard input asks for."));
    const QCommandLineOption width(QStringLiteral("width"), QStringLiteral("Width of the picture in dots."),
        QStringLiteral("dots"), QStringLiteral("576"));
    const QCommandLineOption align(QStringLiteral("align"), QStringLiteral("left, center or right."),
        QStringLiteral("edge"), QStringLiteral("left"));
    const QCommandLineOption opposite(
        QStringLiteral("opposite"), QStringLiteral("Text for the other edge."), QStringLiteral("text"));
    const QCommandLineOption bold(QStringLiteral("bold"), QStringLiteral("Bold letters."));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Times as large, 1 to 8."),
        QStringLiteral("times"), QStringLiteral("1"));
    parser.addOptions({serveOption, width, align, opposite, bold, size});
    parser.process(app);

    loadTypeface(QCoreApplication::applicationDirPath() + QStringLiteral("/fonts"));
    QFile in;
    QFile out;
    // Unbuffered: a read must return what is there, not wait for more.
    if (!in.open(0, QIODevice::ReadOnly | QIODevice::Unbuffered) || !out.open(1, QIODevice::WriteOnly))
        return fail(statusNoReader, QStringLiteral("standard input and output are needed"));
    if (parser.isSet(serveOption))
        return serve(&in, &out);

    const std::optional<LineOfPaper::Edge> edge = LineOfPaper::edgeNamed(parser.value(align));
    const LineOfPaper line{
        .text = parser.positionalArguments().isEmpty() ? QString::fromUtf8(in.readAll())
                                                       : parser.positionalArguments().join(u' '),
        .opposite = parser.value(opposite),
        .width = parser.value(width).toInt(),
        .edge = edge.value_or(LineOfPaper::Edge::Left),
        .bold = parser.isSet(bold),
        .across = parser.value(size).toInt(),
        .down = parser.value(size).toInt(),
    };
    if (!edge || !line.problem().isEmpty())
        return fail(statusUsage, edge ? line.problem() : QStringLiteral("align must be left, center or right"));
    const QByteArray bytes = picture(line);
    if (bytes.isEmpty())
        return fail(statusBadInput, QStringLiteral("the text is too tall"));
    return out.write(bytes) == bytes.size() && out.flush() ? 0 : statusNoReader;
}
