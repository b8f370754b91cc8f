#pragma once

#include "app/commands.h"
#include "base/clock.h"
#include "model/printerinfo.h"
#include "ui/presenters/profile/profileform.h"
#include "ui/presenters/profile/profilesaver.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QVariant>

#include <memory>

namespace zemrak {

/// The settings of one printer while their sheet is open. There is no save button: a change is sent a moment after it
/// was made. The fields are loaded once, at construction, and no poll changes them.
/// Main thread only.
class ProfilePresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString printerId READ printerId CONSTANT)
    Q_PROPERTY(QString printerName READ printerName CONSTANT)
    Q_PROPERTY(QString __proto READ proto WRITE setProto NOTIFY protoChanged)
    Q_PROPERTY(double __dots READ dotsNumber WRITE setDotsNumber NOTIFY dotsChanged)
    Q_PROPERTY(QString __cut READ cut WRITE setCut NOTIFY cutChanged)
    Q_PROPERTY(QString __pin READ pin WRITE setPin NOTIFY pinChanged)
    Q_PROPERTY(QString __dither READ dither WRITE setDither NOTIFY ditherChanged)
    Q_PROPERTY(QString __role READ role WRITE setRole NOTIFY roleChanged)
    Q_PROPERTY(QString __alias READ alias WRITE setAlias NOTIFY aliasChanged)
    Q_PROPERTY(QString __enc READ enc WRITE setEnc NOTIFY encChanged)
    Q_PROPERTY(QString __escT READ escT WRITE setEscT NOTIFY escTChanged)
    Q_PROPERTY(QString escTProblem READ escTProblem NOTIFY escTChanged)
    Q_PROPERTY(bool __loaded READ isLoaded NOTIFY statusChanged)
    Q_PROPERTY(bool __pending READ isPending NOTIFY statusChanged)
    Q_PROPERTY(bool __dirty READ isDirty NOTIFY statusChanged)
    Q_PROPERTY(QDateTime __savedAt READ savedAt NOTIFY statusChanged)
    Q_PROPERTY(bool __saveError READ hasSaveError NOTIFY statusChanged)
    Q_PROPERTY(QString footerIcon READ footerIcon NOTIFY statusChanged)
    Q_PROPERTY(QString footerText READ footerText NOTIFY statusChanged)
    Q_PROPERTY(QString footerColor READ footerColor NOTIFY statusChanged)
    Q_PROPERTY(QVariantList protoOptions READ protoOptions CONSTANT)
    Q_PROPERTY(QVariantList dotsOptions READ dotsOptions CONSTANT)
    Q_PROPERTY(QVariantList ditherOptions READ ditherOptions CONSTANT)
    Q_PROPERTY(QVariantList cutOptions READ cutOptions CONSTANT)
    Q_PROPERTY(QVariantList pinOptions READ pinOptions CONSTANT)
    Q_PROPERTY(QVariantList encOptions READ encOptions CONSTANT)
    Q_PROPERTY(QVariantList roleOptions READ roleOptions CONSTANT)
    Q_PROPERTY(QVariantList actions READ actions CONSTANT)

public:
    /// `commands` outlives this object. Changes not yet sent are lost if `saver` is destroyed first.
    ProfilePresenter(
        const PrinterInfo &printer, Clock &clock, Commands &commands, ProfileSaver &saver, QObject *parent = nullptr);
    ~ProfilePresenter() override;

    [[nodiscard]] QString printerId() const { return m_printer.id; }
    [[nodiscard]] QString printerName() const;

    [[nodiscard]] QString proto() const { return m_form.proto; }
    void setProto(const QString &proto);
    [[nodiscard]] qint64 dots() const { return m_form.dots; }
    void setDots(qint64 dots);
    /// In a form that QML counts with.
    [[nodiscard]] double dotsNumber() const { return double(m_form.dots); }
    void setDotsNumber(double dots) { setDots(qint64(dots)); }
    [[nodiscard]] QString cut() const { return m_form.cut; }
    void setCut(const QString &cut);
    [[nodiscard]] QString pin() const { return m_form.pin; }
    void setPin(const QString &pin);
    [[nodiscard]] QString dither() const { return m_form.dither; }
    void setDither(const QString &dither);
    [[nodiscard]] QString role() const { return m_form.role; }
    void setRole(const QString &role);
    [[nodiscard]] QString alias() const { return m_form.alias; }
    void setAlias(const QString &alias);
    [[nodiscard]] QString enc() const { return m_form.enc; }
    void setEnc(const QString &enc);
    [[nodiscard]] QString escT() const { return m_form.escT; }
    void setEscT(const QString &escT);

    /// What is wrong with the page number as typed; empty: nothing.
    [[nodiscard]] QString escTProblem() const;
    /// Only what is changed after this is saved; it comes true in the turn of the event loop after construction.
    [[nodiscard]] bool isLoaded() const { return m_loaded; }
    /// A save is scheduled.
    [[nodiscard]] bool isPending() const { return m_pending->isActive(); }
    /// Something was changed that has not been sent.
    [[nodiscard]] bool isDirty() const { return m_dirty; }
    /// Invalid before the first save that succeeded.
    [[nodiscard]] QDateTime savedAt() const { return m_savedAt; }
    [[nodiscard]] bool hasSaveError() const { return m_saveError; }

    /// What the person is told when a save was refused.
    [[nodiscard]] static QString notSaved();
    [[nodiscard]] QString footerIcon() const; ///< symbol name; empty: none
    [[nodiscard]] QString footerText() const;
    [[nodiscard]] QString footerColor() const; ///< palette name

    [[nodiscard]] QVariantList protoOptions() const;
    [[nodiscard]] QVariantList dotsOptions() const;
    [[nodiscard]] QVariantList ditherOptions() const;
    [[nodiscard]] QVariantList cutOptions() const;
    [[nodiscard]] QVariantList pinOptions() const;
    [[nodiscard]] QVariantList encOptions() const;
    [[nodiscard]] QVariantList roleOptions() const;
    /// The maintenance buttons this printer has, in order, as {action, title, question} objects; one that destroys
    /// something has a question, to be asked first.
    [[nodiscard]] QVariantList actions() const;

    /// Sends the maintenance command of one of actions().
    Q_INVOKABLE void run(const QString &action);
    /// The sheet is closing, by whatever way: what has not been sent is sent now. Also done by destruction.
    Q_INVOKABLE void close();

Q_SIGNALS:
    void protoChanged();
    void dotsChanged();
    void cutChanged();
    void pinChanged();
    void ditherChanged();
    void roleChanged();
    void aliasChanged();
    void encChanged();
    void escTChanged();
    void statusChanged();

private:
    template <typename Value>
    void change(Value &field, const Value &value, void (ProfilePresenter::*changed)(), std::chrono::milliseconds delay);
    void scheduleSave(std::chrono::milliseconds delay);
    void save();
    void onSaved(bool ok);

    PrinterInfo m_printer;
    Clock &m_clock;
    Commands &m_commands;
    QPointer<ProfileSaver> m_saver; ///< null once destroyed: deleteLater may destroy the presenter after it
    const ProfileForm m_stored; ///< as loaded
    ProfileForm m_form;
    std::unique_ptr<Timer> m_pending;
    QDateTime m_savedAt;
    bool m_loaded = false;
    bool m_dirty = false;
    bool m_saveError = false;
};

} // namespace zemrak
