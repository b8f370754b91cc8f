// Shows the window, its sheets and the component gallery on stored situations: to look at, or as pictures.
#include "base/clock.h"
#include "demo/democontrol.h"
#include "demo/shotmaker.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstdlib>

using namespace zemrak::test;

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zemrak-demo"));
    QApplication::setLayoutDirection(Qt::RightToLeft);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption(
        {QStringLiteral("shot"), QStringLiteral("Write a picture of everything there is."), QStringLiteral("folder")});
    options.addOption({QStringLiteral("text-scale"), QStringLiteral("From 1 to 1.5."), QStringLiteral("factor"),
        QStringLiteral("1")});
    options.addOption(
        {QStringLiteral("only"), QStringLiteral("Only pictures whose name begins so."), QStringLiteral("name")});
    options.process(application);

    const double textScale = options.value(QStringLiteral("text-scale")).toDouble();
    if (options.isSet(QStringLiteral("shot"))) {
        ShotMaker maker(options.value(QStringLiteral("shot")), textScale);
        if (maker.make(options.value(QStringLiteral("only"))))
            return EXIT_SUCCESS;
        std::fprintf(stderr, "zemrak-demo: %s\n", qUtf8Printable(maker.fault()));
        return EXIT_FAILURE;
    }
    zemrak::SystemClock clock;
    DemoControl control(clock);
    control.setTextScale(textScale);
    return control.open() ? QApplication::exec() : EXIT_FAILURE;
}
