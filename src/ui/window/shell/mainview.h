#pragma once

#include "model/printerinfo.h"

#include <QObject>
#include <QSizeF>
#include <QString>

#include <optional>

namespace zemrak {

class Agent;
class Appearance;
class UserDefaults;

/// What the main window shows just now: page, open sheet, sizes. One for each window; it begins on the page that was
/// asked for, or else on the first, and with the wizard until that has been finished. Main thread only.
class MainView : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(bool showOnboarding READ showsOnboarding WRITE setShowOnboarding NOTIFY showOnboardingChanged)
    Q_PROPERTY(QString editing READ editing NOTIFY editingChanged)
    Q_PROPERTY(bool adding READ isAdding WRITE setAdding NOTIFY addingChanged)
    Q_PROPERTY(bool showLog READ showsLog WRITE setShowLog NOTIFY showLogChanged)
    Q_PROPERTY(bool hoverRing MEMBER m_hoverRing NOTIFY hoverRingChanged)
    Q_PROPERTY(QString newSite MEMBER m_newSite NOTIFY newSiteChanged)
    Q_PROPERTY(QSizeF winSize READ winSize WRITE setWinSize NOTIFY layoutChanged)
    Q_PROPERTY(double sidebarWidth READ sidebarWidth NOTIFY layoutChanged)
    Q_PROPERTY(double contentWidth READ contentWidth NOTIFY layoutChanged)
    Q_PROPERTY(double ringScale READ ringScale CONSTANT)
    Q_PROPERTY(double alertsBadge READ alertsBadge NOTIFY alertsBadgeChanged)
    Q_PROPERTY(bool serviceAnswers READ serviceAnswers NOTIFY serviceAnswersChanged)

public:
    // Switches between layouts, which stay as they are: a page fits itself to the room it has.
    static constexpr bool compactW = false; ///< for a narrow window
    static constexpr bool compactH = false; ///< for a short one
    static constexpr bool sideBySide = false; ///< hero and counters of the overview
    static constexpr double hs = 1; ///< vertical scale of the hero

    MainView(Agent &agent, UserDefaults &defaults, Appearance &appearance, QObject *parent = nullptr);

    /// The page's identifier; one that is no page's is refused with a line in the log.
    [[nodiscard]] QString page() const { return m_page; }
    void setPage(const QString &id);

    [[nodiscard]] bool showsOnboarding() const { return m_showOnboarding; }
    void setShowOnboarding(bool show);
    /// The wizard's end: it is not shown by itself again, and a connection check starts.
    Q_INVOKABLE void finishOnboarding();

    /// Opens the settings of that printer as it is now; they stay open when it disappears from the service's list.
    Q_INVOKABLE void edit(const QString &printerId);
    Q_INVOKABLE void endEditing();
    /// The printer's id; empty while its settings are not open.
    [[nodiscard]] QString editing() const { return m_editing ? m_editing->id : QString(); }
    [[nodiscard]] const std::optional<PrinterInfo> &editedPrinter() const { return m_editing; }

    [[nodiscard]] bool isAdding() const { return m_adding; }
    void setAdding(bool adding);
    [[nodiscard]] bool showsLog() const { return m_showLog; }
    void setShowLog(bool show);

    [[nodiscard]] QSizeF winSize() const { return m_winSize; }
    void setWinSize(QSizeF size);
    [[nodiscard]] double sidebarWidth() const;
    /// The width that a page has, without the sidebar and its own margins.
    [[nodiscard]] double contentWidth() const;
    [[nodiscard]] double ringScale() const;
    [[nodiscard]] bool serviceAnswers() const;
    /// In a form that QML counts with.
    [[nodiscard]] double alertsBadge() const;

    /// The window is about to be shown: reads again what may have changed outside the application, such as permissions.
    Q_INVOKABLE void appear();

Q_SIGNALS:
    void pageChanged();
    void showOnboardingChanged();
    void editingChanged();
    void addingChanged();
    void showLogChanged();
    void hoverRingChanged();
    void newSiteChanged();
    void layoutChanged();
    void alertsBadgeChanged();
    void serviceAnswersChanged();

private:
    void takeRequest();

    Agent &m_agent;
    UserDefaults &m_defaults;
    Appearance &m_appearance;
    QString m_page;
    QString m_newSite;
    QSizeF m_winSize{1000, 720};
    std::optional<PrinterInfo> m_editing;
    bool m_showOnboarding = false;
    bool m_adding = false;
    bool m_showLog = false;
    bool m_hoverRing = false;
};

} // namespace zemrak
