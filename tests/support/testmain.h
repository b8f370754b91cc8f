#pragma once

#include <QByteArray>
#include <QSignalSpy>
#include <QTest>

namespace zemrak::test {

/// What one name on the command line of a test program starts: a test class, or a program that a test starts beside it.
/// @param argv the rest of the command line, the program's own name first
using Run = int (*)(int argc, char *argv[]);

/// Makes `run` known as `name`. Called before main(); true for the sake of that.
bool addRun(const char *name, Run run);

/// Names the row of a table whose checks failed: made at the head of a loop over rows, where a check ends the function.
class InRow
{
public:
    explicit InRow(QByteArray name)
        : m_name(std::move(name))
    {
    }
    ~InRow()
    {
        if (QTest::currentTestFailed())
            qInfo("In the row: %s", m_name.constData());
    }
    Q_DISABLE_COPY_MOVE(InRow)

private:
    QByteArray m_name;
};

template <typename Test, typename Application> int runTest(int argc, char *argv[])
{
    QTest::Internal::callInitMain<Test>();
    Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace zemrak::test

/// One test class of a program, and the application object that it wants: QCoreApplication, QGuiApplication or
/// QApplication.
#define ZEMRAK_TEST(name, Test, Application)                                                                           \
    [[maybe_unused]] static const bool test##name                                                                      \
        = zemrak::test::addRun(#name, &zemrak::test::runTest<Test, Application>);
/// A program that a test of the same executable starts, by this name as its first argument.
#define ZEMRAK_TEST_PROGRAM(name, function)                                                                            \
    [[maybe_unused]] static const bool program##name = zemrak::test::addRun(#name, &function);
