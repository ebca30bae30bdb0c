#include <model_Tessel/TextEncoding.h>

#include <QTextCodec>

namespace {

bool decode(const QTextCodec& codec, const QByteArray& bytes, QString& text)
{
    QTextCodec::ConverterState state;
    text = codec.toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

} // namespace

QTextCodec* codecBeforeUtf8()
{
    return QTextCodec::codecForName("windows-1252");
}

bool isValidText(const QTextCodec& codec, const QByteArray& bytes)
{
    QString text;
    return decode(codec, bytes, text);
}

QTextCodec* likelyCodec(const QByteArray& bytes)
{
    QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    return isValidText(*utf8, bytes) ? utf8 : codecBeforeUtf8();
}

int firstInvalidLine(const QTextCodec& codec, const QByteArray& bytes)
{
    int line = 1;
    for (int start = 0; start < bytes.size(); ++line) {
        const int end = bytes.indexOf('\n', start);
        const int size = (end < 0 ? bytes.size() : end + 1) - start;
        if (!isValidText(codec, QByteArray::fromRawData(bytes.constData() + start, size)))
            return line;
        start += size;
    }
    return line;
}

QTextCodec* firstCodec(const QByteArray& bytes, const QByteArray& wanted)
{
    QTextCodec* const unmarked = QTextCodec::codecForName(wanted.isEmpty() ? "UTF-8" : wanted);
    return QTextCodec::codecForUtfText(bytes, unmarked);
}

QString assumedEncodingText()
{
    return QStringLiteral("the text is not valid UTF-8 and was read as %1; if letters look wrong, "
                          "name its encoding")
        .arg(QString::fromLatin1(codecBeforeUtf8()->name()));
}

DecodedText decodeText(const QByteArray& bytes, const QByteArray& wanted)
{
    DecodedText result;
    result.codec = firstCodec(bytes, wanted);
    if (!result.codec)
        return result;
    result.isValid = decode(*result.codec, bytes, result.text);
    if (!result.isValid && wanted.isEmpty() && result.codec->name() == "UTF-8") {
        result.codec = codecBeforeUtf8();
        result.isAssumed = true;
        result.isValid = true;
        result.text = result.codec->toUnicode(bytes);
    }
    if (!result.isValid)
        result.text = QString();
    return result;
}
