#include "preview/TextGuess.h"

#include <QStringDecoder>

namespace {
// How much of a file the guess looks at: enough for any real text.
constexpr qsizetype kSample = 64 * 1024;
// Control bytes (other than tab, line ends, form feed, escape) in one of this
// many bytes or more: binary.
constexpr int kControlRatio = 20;

bool isControl(uchar c)
{
    return c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f' && c != 0x1B;
}

// Zero bytes mostly at odd (little endian) or even (big endian) places.
TextGuess::Encoding utf16ByZeros(const QByteArray& s)
{
    int evenZeros = 0;
    int oddZeros = 0;
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (s.at(i) == 0)
            ++(i % 2 ? oddZeros : evenZeros);
    }
    const qsizetype half = s.size() / 2;
    if (half > 0 && oddZeros > half * 3 / 4 && evenZeros < half / 8)
        return TextGuess::Utf16Le;
    if (half > 0 && evenZeros > half * 3 / 4 && oddZeros < half / 8)
        return TextGuess::Utf16Be;
    return TextGuess::NotText;
}

bool decodesCleanly(const QByteArray& s, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(s);
    return !decoder.hasError() && !text.contains(QChar::ReplacementCharacter);
}
} // namespace

TextGuess::Encoding TextGuess::guess(const QByteArray& bytes)
{
    const QByteArray s = bytes.left(kSample);
    if (s.startsWith("\xFF\xFE"))
        return Utf16Le;
    if (s.startsWith("\xFE\xFF"))
        return Utf16Be;
    const Encoding wide = utf16ByZeros(s);
    if (wide != NotText)
        return wide;
    int controls = 0;
    for (char c : s)
        controls += isControl(uchar(c)) ? 1 : 0;
    if (controls * kControlRatio > s.size())
        return NotText;
    // A multi-byte sequence cut at the sample's end isn't an error of the file.
    return decodesCleanly(s.size() < kSample ? s : s.left(s.size() - 4), QStringConverter::Utf8) ? Utf8 : Gbk;
}

QString TextGuess::decode(const QByteArray& bytes)
{
    switch (guess(bytes)) {
    case Utf8:
        return QString::fromUtf8(bytes);
    case Utf16Le:
        return QStringDecoder(QStringConverter::Utf16LE).decode(bytes);
    case Utf16Be:
        return QStringDecoder(QStringConverter::Utf16BE).decode(bytes);
    case Gbk: {
        QStringDecoder gbk("GBK");
        return gbk.isValid() ? QString(gbk.decode(bytes)) : QString::fromLatin1(bytes);
    }
    case NotText:
        break;
    }
    return QString();
}
