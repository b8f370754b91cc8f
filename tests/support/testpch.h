// What most tests include beside cmake/pch.h. A header belongs here when many of them want it and none of ours is in
// it.
#include <QCoreApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
