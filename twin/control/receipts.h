#pragma once

#include "twin/paper/receipt.h"

#include <QJsonArray>
#include <QList>
#include <QObject>

namespace zemrak::twin {

/// The receipts that came out, the latest of them kept; also in a folder, if there is one.
class Receipts : public QObject
{
    Q_OBJECT

public:
    static constexpr int most = 200;

    struct Kept
    {
        int number;
        QJsonObject list; ///< what was printed
        QByteArray png; ///< empty when there was no paper
        QByteArray bytes;
    };

    /// @param folder is made when it is not there; empty = none. A receipt's files are its number and .png, .bin and
    /// .json, of which the last is written last. Numbers go on after those that are there.
    explicit Receipts(const QString &folder, QObject *parent = nullptr);
    /// Why the folder cannot be written to; empty when it can.
    [[nodiscard]] QString problem() const { return m_problem; }

    void keep(const paper::Receipt &receipt);
    void clear();
    /// nullptr when it is not kept.
    [[nodiscard]] const Kept *find(int number) const;
    [[nodiscard]] const QList<Kept> &all() const { return m_kept; }
    [[nodiscard]] int count() const { return m_count; }
    /// Without what was printed on each.
    [[nodiscard]] QJsonArray summary() const;

private:
    [[nodiscard]] bool write(const QString &name, const QByteArray &bytes);
    void dropOldest();

    QString m_folder;
    QString m_problem;
    QList<Kept> m_kept;
    int m_next = 1;
    int m_count = 0; ///< since the start or clear()
};

} // namespace zemrak::twin
