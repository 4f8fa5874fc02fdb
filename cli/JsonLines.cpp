#include "cli/JsonLines.h"

#include <QJsonDocument>

namespace {
QString compact(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

// `"key":` with the key escaped as JSON escapes it.
QString keyText(const QString& key)
{
    const QString member = compact(QJsonObject{{key, QJsonValue()}}); // {"key":null}
    return member.mid(1, member.size() - 6);
}
} // namespace

void JsonLines::openDocument()
{
    m_sink(QStringLiteral("{"));
    m_first = true;
}

void JsonLines::closeDocument()
{
    m_sink(QStringLiteral("\n}\n"));
}

void JsonLines::next()
{
    m_sink(m_first ? QStringLiteral("\n") : QStringLiteral(",\n"));
    m_first = false;
}

void JsonLines::members(const QJsonObject& object)
{
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        next();
        const QString text = compact(QJsonObject{{it.key(), it.value()}});
        m_sink(text.mid(1, text.size() - 2));
    }
}

void JsonLines::openObject(const QString& key)
{
    next();
    m_sink(keyText(key) + QLatin1Char('{'));
    m_first = true;
}

void JsonLines::closeObject()
{
    m_sink(QStringLiteral("\n}"));
    m_first = false;
}

void JsonLines::openArray(const QString& key)
{
    next();
    m_sink(keyText(key) + QLatin1Char('['));
    m_first = true;
}

void JsonLines::element(const QJsonObject& object)
{
    next();
    m_sink(compact(object));
}

void JsonLines::closeArray()
{
    m_sink(QStringLiteral("\n]"));
    m_first = false;
}
