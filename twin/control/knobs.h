#pragma once

#include <QJsonObject>
#include <QString>

#include <array>
#include <optional>
#include <span>

namespace zemrak::twin {

/// What can be turned on a twin, at any moment.
enum class Knob
{
    Paper,
    Cover,
    Button,
    Error,
    Drawer,
    Speed,
    Reading,
    LumpBytes,
    LumpEvery,
    CloseAfter,
    CloseWith,
    Connections,
    Answers,
    AnswerDelay,
    Flood,
    Buffer,
};
inline constexpr std::size_t knobCount = 16;

// The choices of the knobs that have some, in the order of their names.
enum Paper
{
    PaperOk,
    PaperLow,
    PaperOut
};
enum Cover
{
    CoverClosed,
    CoverOpen
};
enum Button
{
    ButtonOnline,
    ButtonOffline
};
enum Error
{
    ErrorNone,
    ErrorCutter,
    ErrorOverheated,
    ErrorFatal
};
enum Drawer
{
    DrawerClosed,
    DrawerOpen
};
enum Reading
{
    ReadingSteady,
    ReadingNever,
    ReadingLumps
};
enum CloseWith
{
    CloseWithEnd,
    CloseWithReset
};
enum Connections
{
    ManyConnections,
    OneWaits,
    OneRefuses,
    RefuseAll,
    HoldAll,
    Unreachable
};
enum Answers
{
    AnswersTrue,
    AnswersRealTimeOnly,
    AnswersSilent,
    AnswersAllWell,
    AnswersOutOfPaper,
    AnswersNonsense
};

/// What a knob is called and may be set to.
struct KnobSpec
{
    Knob knob;
    const char *name;
    const char *choices; ///< words with a blank between them, of which the first is the usual one; empty for a number
    int least; ///< of a number
    int most;
    int usual;
    const char *what; ///< in English, for people who build shops
};
[[nodiscard]] std::span<const KnobSpec> knobSpecs();
[[nodiscard]] const KnobSpec &specOf(Knob knob);

/// The positions of all knobs.
class Knobs
{
public:
    Knobs();
    [[nodiscard]] int operator[](Knob knob) const { return m_values[static_cast<std::size_t>(knob)]; }
    void set(Knob knob, int value) { m_values[static_cast<std::size_t>(knob)] = value; }

    /// A choice is its word, a number a number.
    [[nodiscard]] QJsonObject toJson() const;
    /// These knobs with the given ones changed; none, and the reason, when a name or a value is not known.
    [[nodiscard]] std::optional<Knobs> changed(const QJsonObject &change, QString *problem) const;
    /// The same for "name=value".
    [[nodiscard]] std::optional<Knobs> changed(const QString &assignment, QString *problem) const;

    bool operator==(const Knobs &) const = default;

private:
    std::array<int, knobCount> m_values{};
};

} // namespace zemrak::twin
