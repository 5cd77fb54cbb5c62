#include "support/SignalLog.h"

#include "support/WaitUntil.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaMethod>

#include <algorithm>

SignalLog::SignalLog(QObject &object, const Describer &describer) : m_describer(describer)
{
    const QMetaObject &type = *object.metaObject();
    for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
        const QMetaMethod method = type.method(index);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        if (method.attributes() & QMetaMethod::Cloned) // the same signal without its default arguments
            continue;
        Source source;
        source.name = QString::fromLatin1(method.name());
        for (int i = 0; i < method.parameterCount(); ++i) {
            int argumentType = method.parameterType(i);
            if (argumentType == QMetaType::UnknownType) {
                void *request[] = {&argumentType, &i};
                QMetaObject::metacall(&object, QMetaObject::RegisterMethodArgumentMetaType, index, request);
            }
            if (argumentType <= QMetaType::UnknownType)
                qFatal("Argument %d of %s is of no known type", i, method.methodSignature().constData());
            source.argumentTypes.append(argumentType);
        }
        const int slot = QObject::staticMetaObject.methodCount() + m_sources.size();
        m_sources.append(source);
        QMetaObject::connect(&object, index, this, slot, Qt::DirectConnection, nullptr);
    }
}

int SignalLog::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    id = QObject::qt_metacall(call, id, arguments);
    if (id < 0 || call != QMetaObject::InvokeMetaMethod)
        return id;
    const Source &source = m_sources.at(id);
    Entry entry;
    entry.name = source.name;
    for (int i = 0; i < source.argumentTypes.size(); ++i)
        entry.arguments.append(QVariant(source.argumentTypes.at(i), arguments[i + 1]));
    m_entries.append(entry);
    return -1;
}

QString SignalLog::describe(const QVariant &value) const
{
    const QString text = m_describer ? m_describer(value) : QString();
    if (!text.isNull())
        return text;
    if (value.userType() == QMetaType::QJsonObject)
        return QString::fromUtf8(QJsonDocument(value.toJsonObject()).toJson(QJsonDocument::Compact));
    if (value.canConvert<QString>())
        return value.toString();
    if (value.canConvert<int>())
        return QString::number(value.toInt());
    return QString::fromLatin1(value.typeName());
}

QStringList SignalLog::names() const
{
    QStringList names;
    for (const Entry &entry : m_entries)
        names.append(entry.name);
    return names;
}

QStringList SignalLog::lines() const
{
    QStringList lines;
    for (const Entry &entry : m_entries) {
        QStringList arguments;
        for (const QVariant &argument : entry.arguments)
            arguments.append(describe(argument));
        lines.append(entry.name + QLatin1Char('(') + arguments.join(QStringLiteral(", ")) + QLatin1Char(')'));
    }
    return lines;
}

int SignalLog::count(const QString &name) const
{
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [&name](const Entry &entry) { return entry.name == name; }));
}

bool SignalLog::waitFor(int count, int timeoutMs) const
{
    return waitUntil([this, count] { return m_entries.size() >= count; }, timeoutMs);
}
