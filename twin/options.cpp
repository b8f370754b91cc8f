#include "twin/options.h"

#include "twin/control/control.h"

#include <QCommandLineParser>

#include <string_view>

namespace zemrak::twin {

namespace {

QString text(const char *what)
{
    return QString::fromUtf8(what);
}

QString description()
{
    QString all = text(
        "A receipt printer in software: it takes what a till sends to a printer, draws the paper dot by dot,\n"
        "and answers as a printer does. With --headless there is no window; the line of JSON on standard output\n"
        "says where it listens.\n\nKnobs, for --set and for HTTP (the first choice is the usual one):\n");
    for (const KnobSpec &spec : knobSpecs()) {
        const QString values = *spec.choices != '\0'
            ? QString::fromLatin1(spec.choices).replace(u' ', QStringLiteral(", "))
            : QStringLiteral("%1 to %2, usually %3").arg(spec.least).arg(spec.most).arg(spec.usual);
        all += QStringLiteral("  %1: %2\n      %3\n").arg(text(spec.name), values, text(spec.what));
    }
    return all + text("\nOver HTTP, with --control-port:\n") + text(Control::usage);
}

struct Reader
{
    const QCommandLineParser &parser;
    QString *problem;

    std::optional<quint16> port(const QString &name)
    {
        const QString value = parser.value(name);
        if (value.isEmpty() || value == QLatin1String("none"))
            return {};
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        if (!isNumber || number < 0 || number > 65535) {
            *problem = QStringLiteral("--%1 must be a port from 0 to 65535, or none").arg(name);
            return {};
        }
        return static_cast<quint16>(number);
    }
};

} // namespace

bool wantsNoWindow(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument(argv[i]);
        if (argument == "--headless" || argument == "--help" || argument == "-h" || argument == "--version"
            || argument == "-v")
            return true;
    }
    return false;
}

std::optional<Options> readOptions(const QStringList &arguments, QString *problem)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {text("headless"), text("Show no window.")},
        {text("dark"), text("Show the window in dark colours, whatever the desktop looks like.")},
        {text("address"), text("Listen on this address, as 127.0.0.2."), text("address"), text("127.0.0.1")},
        {text("port"), text("Port for raw printing; 0 for any, none for none."), text("port"), text("9100")},
        {text("lpd-port"), text("Port for LPD, as 515; without it there is none."), text("port")},
        {text("serial"), text("Be a serial printer too, on a pseudo-terminal.")},
        {text("serial-link"), text("Likewise, and link to it from this path."), text("path")},
        {text("control-port"), text("Port on 127.0.0.1 for knobs over HTTP; without it there is none."), text("port")},
        {text("folder"), text("Write each receipt into this folder: its picture, its bytes and what was printed."),
            text("folder")},
        {text("dots"), text("Width of the paper in dots, as 384, 512, 576 or 832."), text("dots"), text("576")},
        {text("language"), text("What it speaks: escpos or star."), text("language"), text("escpos")},
        {text("set"), text("Turn a knob before the start, as paper=out; may be given more than once."),
            text("knob=value")},
        {text("until-input-ends"),
            text("End when standard input does, as when the program that started it has ended.")},
    });
    parser.process(arguments);

    Options options;
    Reader reader{parser, problem};
    options.headless = parser.isSet(text("headless"));
    options.dark = parser.isSet(text("dark"));
    options.untilInputEnds = parser.isSet(text("until-input-ends"));
    options.port = reader.port(text("port"));
    options.lpdPort = reader.port(text("lpd-port"));
    options.controlPort = reader.port(text("control-port"));
    options.serialLink = parser.value(text("serial-link"));
    options.serial = parser.isSet(text("serial")) || !options.serialLink.isEmpty();
    options.folder = parser.value(text("folder"));
    options.dots = parser.value(text("dots")).toInt();
    if (!options.address.setAddress(parser.value(text("address"))))
        *problem = QStringLiteral("--address must be an address, as 127.0.0.2");
    if (options.dots < paper::limits::minimumDots || options.dots > paper::limits::maximumDots)
        *problem = QStringLiteral("--dots must be from %1 to %2")
                       .arg(paper::limits::minimumDots)
                       .arg(paper::limits::maximumDots);
    const QString language = parser.value(text("language"));
    if (language == QLatin1String("star"))
        options.language = paper::Language::StarLine;
    else if (language != QLatin1String("escpos"))
        *problem = QStringLiteral("--language must be escpos or star");
    const QStringList settings = parser.values(text("set"));
    for (const QString &setting : settings)
        if (const std::optional<Knobs> knobs = options.knobs.changed(setting, problem))
            options.knobs = *knobs;
    if (!parser.positionalArguments().isEmpty())
        *problem = QStringLiteral("\"%1\" is not an option").arg(parser.positionalArguments().constFirst());
    return problem->isEmpty() ? std::optional<Options>(options) : std::nullopt;
}

} // namespace zemrak::twin
