#include "text/Utf8Text.h"

#include <QtTest>

#include <random>

class tst_Utf8Text : public QObject {
    Q_OBJECT

private slots:
    void anyTexts();
};

// As QString tells it, halves of characters beyond 16 bits included.
void tst_Utf8Text::anyTexts()
{
    std::mt19937 random(5);
    const auto below = [&random](unsigned limit) { return random() % limit; };
    for (int turn = 0; turn < 5000; ++turn) {
        const unsigned limit = 1U << (6 + below(11)); // of the characters
        QByteArray bytes(int(below(4)), 'x');
        QByteArray expected = bytes;
        for (unsigned texts = below(4); texts > 0; --texts) {
            QString text;
            for (unsigned left = below(40); left > 0; --left)
                text += QChar(ushort(below(limit)));
            appendUtf8(bytes, text);
            expected += text.toUtf8();
        }
        QCOMPARE(bytes, expected);
    }
    const QString pair = QString::fromUtf8("\xF0\x9F\x8F\xA0");
    QByteArray bytes;
    appendUtf8(bytes, pair);
    appendUtf8(bytes, pair.left(1));
    QCOMPARE(bytes, pair.toUtf8() + pair.left(1).toUtf8());
}

QTEST_APPLESS_MAIN(tst_Utf8Text)
#include "tst_Utf8Text.moc"
