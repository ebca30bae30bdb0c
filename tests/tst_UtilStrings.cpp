#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/UtilStrings.h>

#include <QDir>
#include <QFont>
#include <QFontMetrics>
#include <QtTest>

#include <limits>
#include <type_traits>

namespace {

int widthOf(const QString& text)
{
    return QFontMetrics(QFont("Arial", 10)).horizontalAdvance(text);
}

const QString longPath = QStringLiteral(R"(C:\data\census\2010\files\dictionary.dcf)");

// Kept: the base has no virtual destructor.
QT_WARNING_PUSH
QT_WARNING_DISABLE_GCC("-Wnon-virtual-dtor")
QT_WARNING_DISABLE_CLANG("-Wnon-virtual-dtor")
class Watched : public TOxList {
public:
    using TOxList::TOxList;
    void Notify(void* item) override
    {
        told.append(item);
    }
    QList<void*> told;
};
QT_WARNING_POP

} // namespace

class tst_UtilStrings : public QObject {
    Q_OBJECT

private slots:
    void shortenPath_data();
    void shortenPath();
    void shortenPathAtItsWidth();
    void shortenPathOnlyOnce();

    void wordSeparator_data();
    void wordSeparator();
    void wordSeparatorWalksATextToItsEnd();

    void stringOfChar_data();
    void stringOfChar();

    void trailingBlanksAreBlanksOnly();

    void listIsAListOfTexts();
    void listKeepsTheFlag();
    void removeRemovesNothing();
    void notifyIsAHook();
};

void tst_UtilStrings::shortenPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("shortened");

    QTest::newRow("five directories") << longPath << R"(C:\data\...\dictionary.dcf)";
    QTest::newRow("three backslashes") << R"(C:\data\census\file)"
                                       << R"(C:\data\...\file)";
    QTest::newRow("two backslashes, longer than before") << R"(C:\data\file)"
                                                         << R"(C:\data\...\file)";
    QTest::newRow("one backslash, the start is lost") << R"(data\file)"
                                                      << R"(...\file)";
    QTest::newRow("one backslash at the start") << R"(\file)"
                                                << R"(...\file)";
    QTest::newRow("one backslash at the end") << R"(data\)"
                                              << R"(...\)";
    QTest::newRow("two backslashes at the start") << R"(\\host\share\file)"
                                                  << R"(\\...\file)";
    QTest::newRow("backslash at the end") << R"(C:\data\census\)"
                                          << R"(C:\data\...\)";
    QTest::newRow("no backslash, last character lost") << "/data/census/file.dcf"
                                                       << ".../data/census/file.dc";
    QTest::newRow("bare name, last character lost") << "dictionary"
                                                    << "...dictionar";
    QTest::newRow("one character") << "x"
                                   << "...";
    QTest::newRow("both separators") << R"(C:\a/b\c/d\e/f)"
                                     << R"(C:\a/b\...\e/f)";
}

void tst_UtilStrings::shortenPath()
{
    QFETCH(QString, path);
    QFETCH(QString, shortened);
    QCOMPARE(UtilStrings::getBetterPathString(path, widthOf(path) - 1),
        QDir::toNativeSeparators(shortened));
    QCOMPARE(UtilStrings::getBetterPathString(path, widthOf(path)), QDir::toNativeSeparators(path));
}

void tst_UtilStrings::shortenPathAtItsWidth()
{
    const QString shortened = QDir::toNativeSeparators(R"(C:\data\...\dictionary.dcf)");
    const QString whole = QDir::toNativeSeparators(longPath);
    const int width = widthOf(longPath);
    QCOMPARE(UtilStrings::getBetterPathString(longPath, width - 1), shortened);
    QCOMPARE(UtilStrings::getBetterPathString(longPath, width), whole);
    QCOMPARE(UtilStrings::getBetterPathString(longPath, width + 1), whole);
    QCOMPARE(UtilStrings::getBetterPathString(QString(), 0), QString());
    QCOMPARE(UtilStrings::getBetterPathString(QString(), -1), QString("..."));
}

void tst_UtilStrings::shortenPathOnlyOnce()
{
    const QString shortened = QDir::toNativeSeparators(R"(C:\data\...\dictionary.dcf)");
    for (const int width : { 0, -1, 1, widthOf("...") })
        QCOMPARE(UtilStrings::getBetterPathString(longPath, width), shortened);
}

void tst_UtilStrings::wordSeparator_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("next");

    QTest::newRow("first word") << "a;b;c" << 0 << ";"
                                << ""
                                << "a" << 2;
    QTest::newRow("second word") << "a;b;c" << 2 << ";"
                                 << ""
                                 << "b" << 4;
    QTest::newRow("last word") << "a;b;c" << 4 << ";"
                               << ""
                               << "c" << -1;
    QTest::newRow("within a word") << "abc;d" << 1 << ";"
                                   << ""
                                   << "bc" << 4;
    QTest::newRow("at a separator") << "a;b" << 1 << ";"
                                    << ""
                                    << "" << 2;
    QTest::newRow("two separators in a row") << "a;;b" << 2 << ";"
                                             << ""
                                             << "" << 3;
    QTest::newRow("separator at the start") << ";a" << 0 << ";"
                                            << ""
                                            << "" << 1;
    QTest::newRow("separator at the end, before it") << "a;" << 0 << ";"
                                                     << ""
                                                     << "a" << 2;
    QTest::newRow("separator at the end, behind it") << "a;" << 2 << ";"
                                                     << ""
                                                     << "" << -1;
    QTest::newRow("position behind the text") << "abc" << 7 << ";"
                                              << ""
                                              << "" << -1;
    QTest::newRow("position -1, as at the end") << "a;b" << -1 << ";"
                                                << ""
                                                << "a" << 2;
    QTest::newRow("position -1, no separator") << "abc" << -1 << ";"
                                               << ""
                                               << "abc" << -1;
    QTest::newRow("position -1, separator first") << ";b" << -1 << ";"
                                                  << ""
                                                  << "" << 1;
    QTest::newRow("empty text") << "" << 0 << ";"
                                << ""
                                << "" << -1;
    QTest::newRow("no separator in the text") << "abc" << 0 << ";"
                                              << ""
                                              << "abc" << -1;
    QTest::newRow("empty separator") << "abc" << 0 << ""
                                     << ""
                                     << "abc" << -1;
    QTest::newRow("separator of two characters") << "a::b" << 0 << "::"
                                                 << ""
                                                 << "a::b" << -1;
    QTest::newRow("separator in the other case") << "aXbxc" << 0 << "x"
                                                 << ""
                                                 << "aXb" << 4;
    QTest::newRow("blanks are kept") << " a ; b" << 0 << ";"
                                     << ""
                                     << " a " << 4;

    QTest::newRow("marker second") << "n=age;x" << 0 << ";"
                                   << "="
                                   << "age" << 6;
    QTest::newRow("marker first") << "=age;x" << 0 << ";"
                                  << "="
                                  << "=age" << 5;
    QTest::newRow("marker third") << "no=age" << 0 << ";"
                                  << "="
                                  << "no=age" << -1;
    QTest::newRow("marker first and second") << "==age" << 0 << ";"
                                             << "="
                                             << "age" << -1;
    QTest::newRow("marker ends the word") << "n=;x" << 0 << ";"
                                          << "="
                                          << "" << 3;
    QTest::newRow("marker in the next word") << "n;=x" << 0 << ";"
                                             << "="
                                             << "n" << 2;
    QTest::newRow("marker in the other case") << "nXage" << 0 << ";"
                                              << "x"
                                              << "nXage" << -1;
    QTest::newRow("marker of two characters") << "n==age" << 0 << ";"
                                              << "=="
                                              << "n==age" << -1;
    QTest::newRow("empty word with a marker") << ";x" << 0 << ";"
                                              << "="
                                              << "" << 1;
    QTest::newRow("word of one character, empty marker") << "n" << 0 << ";"
                                                         << ""
                                                         << "n" << -1;
}

void tst_UtilStrings::wordSeparator()
{
    QFETCH(QString, text);
    QFETCH(int, position);
    QFETCH(QString, separator);
    QFETCH(QString, marker);
    QFETCH(QString, word);
    QFETCH(int, next);
    QCOMPARE(UtilStrings::GetWordSeparator(text, position, separator, marker), word);
    QCOMPARE(position, next);
}

void tst_UtilStrings::wordSeparatorWalksATextToItsEnd()
{
    QStringList words;
    int position = 0;
    while (position >= 0)
        words << UtilStrings::GetWordSeparator("1=one;2=two;;three;", position, ";", "=");
    QCOMPARE(words, QStringList({ "one", "two", "", "three", "" }));
}

void tst_UtilStrings::stringOfChar_data()
{
    QTest::addColumn<char>("character");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("text");

    QTest::newRow("three nines") << '9' << 3 << "999";
    QTest::newRow("one blank") << ' ' << 1 << " ";
    QTest::newRow("none") << '9' << 0 << "";
    QTest::newRow("fewer than none") << '9' << -1 << "";
    QTest::newRow("fewest") << '9' << std::numeric_limits<int>::min() << "";
    QTest::newRow("null character") << '\0' << 2 << QString(2, QChar(0));
    QTest::newRow("character above ASCII") << '\xe9' << 2 << "\u00e9\u00e9";
    QTest::newRow("many") << '9' << 1000 << QString("9").repeated(1000);
}

void tst_UtilStrings::stringOfChar()
{
    QFETCH(char, character);
    QFETCH(int, count);
    QTEST(StringOfChar(character, count), "text");
    QTEST(TCSProDataImport().StringOfChar(character, count), "text");
}

void tst_UtilStrings::listIsAListOfTexts()
{
    static_assert(std::is_base_of<QList<QString>, TOxList>::value, "used as a list");
    TOxList list(false);
    list << "b"
         << "a";
    QCOMPARE(static_cast<const QList<QString>&>(list), QList<QString>({ "b", "a" }));
}

void tst_UtilStrings::listKeepsTheFlag()
{
    QCOMPARE(TOxList(false).changed, false);
    QCOMPARE(TOxList(true).changed, true);
}

void tst_UtilStrings::removeRemovesNothing()
{
    QString first = "a";
    TOxList list(false);
    list << first << "b";
    QVERIFY(list.Remove1(&first));
    QCOMPARE(list.changed, true);
    QCOMPARE(list.size(), 2);
    QVERIFY(list.Remove1(nullptr));
    QCOMPARE(list.changed, true);
    QCOMPARE(list.size(), 2);
}

void tst_UtilStrings::notifyIsAHook()
{
    TOxList plain(false);
    plain << "a";
    plain.Notify(&plain.first());
    QCOMPARE(plain.size(), 1);
    QCOMPARE(plain.changed, false);

    Watched watched(false);
    TOxList& list = watched;
    list.Remove1(&list);
    QCOMPARE(watched.told.size(), 0);
    list.Notify(&list);
    QCOMPARE(watched.told, QList<void*>({ &list }));
}

void tst_UtilStrings::trailingBlanksAreBlanksOnly()
{
    QCOMPARE(withoutTrailingBlanks(" a b  "), QString(" a b"));
    QCOMPARE(withoutTrailingBlanks("   "), QString(""));
    QCOMPARE(withoutTrailingBlanks("a\t"), QString("a\t"));
    QCOMPARE(withoutTrailingBlanks(QString("a") + QChar(0xA0)), QString("a") + QChar(0xA0));
}

QTEST_MAIN(tst_UtilStrings)

#include "tst_UtilStrings.moc"
