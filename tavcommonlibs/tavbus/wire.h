#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <optional>

/**
 * What may cross the bus, and in which form: the one place that both sides ask.
 */
namespace tavbus::wire {

constexpr int kMaxName = 255; // characters
constexpr int kMaxDescription = 4096; // characters
constexpr int kMaxDepth = 16; // lists and maps inside one another, the outermost included
constexpr int kMaxRecord = 1024 * 1024; // bytes, packed
constexpr int kMaxState = 64 * 1024; // bytes, packed; also for a command's data

/// Whether \a name can be that of an agent, an owner or a command.
bool isName(const QString &name);

/// Whether \a text arrives as it was sent: D-Bus ends a string at a NUL character.
bool isText(const QString &text);

/// \a value as bytes that keep its types; and back, nothing when the bytes are damaged or hold what
/// checked() would not have let pass.
QByteArray packed(const QVariant &value);
std::optional<QVariant> unpacked(const QByteArray &bytes);

/// The list or map with everything that Qt left marshalled taken out of its wrapping; nothing when
/// it holds a type that cannot cross the bus unchanged, is nested too deep, or would take more than
/// \a limit bytes packed.
std::optional<QVariantList> checked(const QVariantList &list, int limit);
std::optional<QVariantMap> checked(const QVariantMap &map, int limit);

/// Milliseconds since the epoch; an invalid time stamp is the smallest number. One beyond the years
/// 1 to 9999 is none either: sums with it could overflow, and pass for new what was never stamped.
qint64 fromDateTime(const QDateTime &dt);
QDateTime toDateTime(qint64 stamp);

} // namespace tavbus::wire
