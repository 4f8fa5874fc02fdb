#pragma once
#include <QByteArray>
#include <QString>

// Reads bytes as text in the encoding they most likely are: UTF-16 (by its
// byte order mark or its many zero bytes), UTF-8 when it decodes cleanly, else
// GBK, the common code page of Chinese text files. A null string when the
// bytes don't look like text at all.
class TextGuess {
public:
    enum Encoding { Utf8, Utf16Le, Utf16Be, Gbk, NotText };

    static Encoding guess(const QByteArray& bytes);
    static QString decode(const QByteArray& bytes);
};
