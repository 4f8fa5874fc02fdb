#pragma once
#include <QJsonObject>
#include <QString>
#include <functional>

// A JSON document written piece by piece, one array element per line, so a
// listing of a million files never stands in memory whole. The caller opens
// the document, writes members and arrays in any order, and closes it.
class JsonLines {
public:
    using LineSink = std::function<void(const QString& text)>;
    explicit JsonLines(LineSink sink) : m_sink(std::move(sink)) {}

    void openDocument();
    void closeDocument();
    // Each of an object's members, compact, as members of the open object.
    void members(const QJsonObject& object);
    // "key": { ... } left open for members and arrays; closed by closeObject.
    void openObject(const QString& key);
    void closeObject();
    // "key": [ ... ] with elements added one at a time; closed by closeArray.
    void openArray(const QString& key);
    void element(const QJsonObject& object);
    void closeArray();

private:
    void next(); // the comma between members or elements, when one came before
    LineSink m_sink;
    bool m_first = true;
};
