#pragma once

#include "app/commands.h"
#include "ui/presenters/addprinter/foundprintermodel.h"

#include <QObject>
#include <QVariant>

#include <initializer_list>

namespace zemrak {

/// The sheet that adds a printer: searches on the network and at the USB ports, and an address typed by hand. Main
/// thread only.
class AddPrinterPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString __tab READ tab WRITE setTab NOTIFY tabChanged)
    Q_PROPERTY(bool __scanning READ isScanning NOTIFY scanningChanged)
    Q_PROPERTY(zemrak::FoundPrinterModel *__hosts READ hosts CONSTANT)
    Q_PROPERTY(zemrak::FoundPrinterModel *__bonjour READ bonjour CONSTANT)
    Q_PROPERTY(zemrak::FoundPrinterModel *__usb READ usb CONSTANT)
    Q_PROPERTY(QString __name READ name WRITE setName NOTIFY manualChanged)
    Q_PROPERTY(QString __host READ host WRITE setHost NOTIFY manualChanged)
    Q_PROPERTY(QString __port READ port WRITE setPort NOTIFY manualChanged)
    Q_PROPERTY(QVariantList tabs READ tabs CONSTANT)
    Q_PROPERTY(bool canSearchNetwork READ canSearchNetwork NOTIFY scanningChanged)
    Q_PROPERTY(bool canSearchBonjour READ canSearchBonjour NOTIFY scanningChanged)
    Q_PROPERTY(bool canSearchUsb READ canSearchUsb NOTIFY scanningChanged)
    Q_PROPERTY(QString hostProblem READ hostProblem NOTIFY manualChanged)
    Q_PROPERTY(QString portProblem READ portProblem NOTIFY manualChanged)
    Q_PROPERTY(bool canAddManual READ canAddManual NOTIFY manualChanged)
    Q_PROPERTY(bool addingManual READ isAddingManual NOTIFY manualChanged)
    Q_PROPERTY(QString networkHint READ networkHint NOTIFY hintsChanged)
    Q_PROPERTY(QString networkOutcome READ networkOutcome NOTIFY hintsChanged)
    Q_PROPERTY(QString usbHint READ usbHint NOTIFY hintsChanged)
    Q_PROPERTY(QString usbOutcome READ usbOutcome NOTIFY hintsChanged)

public:
    /// `commands` outlives this object.
    explicit AddPrinterPresenter(Commands &commands, QObject *parent = nullptr);

    [[nodiscard]] QString tab() const { return m_tab; }
    void setTab(const QString &tab);
    /// Some search is under way.
    [[nodiscard]] bool isScanning() const { return m_searching[0] || m_searching[1] || m_searching[2]; }
    [[nodiscard]] FoundPrinterModel *hosts() { return &m_hosts; }
    [[nodiscard]] FoundPrinterModel *bonjour() { return &m_bonjour; }
    [[nodiscard]] FoundPrinterModel *usb() { return &m_usb; }
    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] QString host() const { return m_host; }
    void setHost(const QString &host);
    [[nodiscard]] QString port() const { return m_port; }
    void setPort(const QString &port);

    /// {value, label} objects.
    [[nodiscard]] QVariantList tabs() const;
    [[nodiscard]] bool canSearchNetwork() const { return !m_searching[Network]; }
    [[nodiscard]] bool canSearchBonjour() const { return !m_searching[Bonjour]; }
    [[nodiscard]] bool canSearchUsb() const { return !m_searching[Usb]; }
    /// There is an address to add.
    [[nodiscard]] bool canAddManual() const { return !m_host.trimmed().isEmpty(); }
    /// Why the service refused the address as it was sent last, until another is typed; empty: it did not.
    [[nodiscard]] QString hostProblem() const { return portProblem().isEmpty() ? m_refusal : QString(); }
    /// What is wrong with the port as typed; empty: nothing.
    [[nodiscard]] QString portProblem() const;
    /// Adding what was typed is under way.
    [[nodiscard]] bool isAddingManual() const { return m_addingManual; }
    /// What to tell on the network tab besides the hits; empty: nothing.
    [[nodiscard]] QString networkHint() const;
    /// That the searches came to nothing, or why one could not be made; empty while they have not.
    [[nodiscard]] QString networkOutcome() const;
    [[nodiscard]] QString usbHint() const;
    [[nodiscard]] QString usbOutcome() const;

    /// Each replaces the hits of its own kind; a search of a kind that is under way is not begun again.
    Q_INVOKABLE void searchNetwork();
    Q_INVOKABLE void searchBonjour();
    Q_INVOKABLE void searchUsb();

    // One that is being added, or has been since its search, is not added again; one that could not be can be.
    Q_INVOKABLE void addHost(int row);
    Q_INVOKABLE void addBonjour(int row);
    Q_INVOKABLE void addUsb(int row);
    /// Adds what was typed, unless that is under way. The host goes as typed; a port that is no number counts as the
    /// usual one. A refusal is told by hostProblem().
    Q_INVOKABLE void addManual();

Q_SIGNALS:
    void tabChanged();
    void scanningChanged();
    void manualChanged();
    void hintsChanged();

private:
    enum Kind
    {
        Network,
        Bonjour,
        Usb,
        Kinds
    };

    template <typename Record>
    void search(Kind kind, FoundPrinterModel &hits, void (Commands::*scan)(Commands::Found<Record>));
    void setSearching(Kind kind, bool searching);
    [[nodiscard]] QString hindrance(std::initializer_list<Kind> kinds) const;
    void add(FoundPrinterModel &hits, int row);
    void setAddingManual(bool adding);

    Commands &m_commands;
    FoundPrinterModel m_hosts;
    FoundPrinterModel m_bonjour;
    FoundPrinterModel m_usb;
    QString m_tab = QStringLiteral("net");
    QString m_name;
    QString m_host;
    QString m_port = QStringLiteral("9100");
    QString m_refusal; ///< of the last address that was typed
    bool m_addingManual = false;
    bool m_searching[Kinds] = {};
    bool m_searched[Kinds] = {}; ///< at least once to the end
    QString m_hindrances[Kinds]; ///< why the last search could not be made; empty: it was
};

} // namespace zemrak
