#include "text/Utf8Text.h"

void appendUtf8(QByteArray& bytes, const QString& text)
{
    constexpr ushort AsciiLast = 0x7F;
    const int start = bytes.size();
    const int size = text.size();
    bytes.resize(start + size);
    char* const target = bytes.data() + start;
    const QChar* const source = text.constData();
    ushort bits = 0;
    for (int i = 0; i < size; ++i) {
        bits |= source[i].unicode();
        target[i] = static_cast<char>(source[i].unicode());
    }
    if (bits > AsciiLast)
        bytes.replace(start, size, text.toUtf8());
}
