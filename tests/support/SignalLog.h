#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

/// Writes down every signal that an object's own class emits, in order and with arguments. It sees what a row
/// of QSignalSpies does not: the order between signals, and the signal that nobody expected.
class SignalLog final : public QObject
{
public:
    struct Entry
    {
        QString name;
        QVariantList arguments;
    };

    /// Writes one argument as text. Returns a null text for a type that it does not know.
    using Describer = std::function<QString(const QVariant &)>;

    /// Listens to all signals that the class of \p object declares; those of its base classes are left out.
    /// Argument types that are no built-in types have to be declared as meta-types; \p describer may say how
    /// lines() writes them.
    explicit SignalLog(QObject &object, const Describer &describer = {});
    Q_DISABLE_COPY_MOVE(SignalLog)

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

    const QList<Entry> &entries() const { return m_entries; }
    /// The names alone, in order.
    QStringList names() const;
    /// Each signal as a line: name(text, true, 7). Texts stand as they are, objects as compact JSON, enums as
    /// their number, lists and records as the name of their type.
    QStringList lines() const;
    /// How often the signal \p name has come.
    int count(const QString &name) const;
    void clear() { m_entries.clear(); }
    /// Runs the event loop until \p count signals have come in all; false after \p timeoutMs milliseconds.
    bool waitFor(int count, int timeoutMs = 10000) const;

private:
    struct Source
    {
        QString name;
        QList<int> argumentTypes;
    };

    QString describe(const QVariant &value) const;

    Describer m_describer;
    QList<Source> m_sources;
    QList<Entry> m_entries;
};
