#include <model_Tessel/MLDB.h>

#include <QtTest>

class tst_MLDB : public QObject {
    Q_OBJECT

private slots:
    void message_data();
    void message();
    void keyIsNotConsulted_data();
    void keyIsNotConsulted();
    void argumentsStayAsTheyAre();
    void helpPageIsNull_data();
    void helpPageIsNull();
};

void tst_MLDB::message_data()
{
    QTest::addColumn<QString>("defaultText");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    const auto row = [](const char* name, const char* defaultText, const QStringList& arguments,
                         const char* message) {
        QTest::newRow(name) << QString::fromUtf8(defaultText) << arguments
                            << QString::fromUtf8(message);
    };
    const QStringList letters = { "a", "b", "c", "d", "e", "f" };

    row("no placeholder, no argument", "File not found", {}, "File not found");
    row("no placeholder, all arguments", "File not found", letters, "File not found");
    row("empty default text", "", letters, "");
    row("nothing but a placeholder", "%3", letters, "c");

    row("each placeholder has its argument", "%1-%2-%3-%4-%5-%6", letters, "a-b-c-d-e-f");
    row("placeholders in any order", "%6%5%4%3%2%1", letters, "fedcba");
    row("every occurrence is filled", "%2 %1 %2 %1%1", letters, "b a b aa");
    row("long values", "Line %1: %2", { "1200", "wrong key size" }, "Line 1200: wrong key size");
    row("values beyond Latin-1", "[%1]", { QString::fromUtf8("\u00f1\u4e2d\U0001f600") },
        "[\u00f1\u4e2d\U0001f600]");

    row("empty argument removes its placeholder", "File [%1] of [%2]", { "a", "" },
        "File [a] of []");
    row("null argument removes its placeholder", "File [%1] of [%2]", { "a", QString() },
        "File [a] of []");
    row("empty first argument", "File [%1] of [%2]", { "", "b" }, "File [] of [b]");
    row("all arguments empty", "%1-%2-%3-%4-%5-%6", {}, "-----");
    row("every occurrence is removed", "%4x%4y%4", {}, "xy");
    row("blank argument is kept", "[%1]", { " " }, "[ ]");

    row("value with a later placeholder", "(%1)", { "%2", "x" }, "(x)");
    row("value with a later placeholder, itself empty", "(%1)", { "%2" }, "()");
    row("values that lead to the sixth", "%1", { "%2", "%3", "%4", "%5", "%6", "z" }, "z");
    row("value with its own placeholder", "(%1)", { "%1" }, "(%1)");
    row("value with an earlier placeholder", "%1 %2", { "a", "%1" }, "a %1");
    row("value grows before the next step", "%1 %2", { "%2%2", "b" }, "bb b");

    row("%10 is %1 and a zero", "%10 of %20", letters, "a0 of b0");
    row("%61 is %6 and a one", "%61", letters, "f1");
    row("%10 without an argument", "%10", {}, "0");
    row("%0 stays", "%0 %1", letters, "%0 a");
    row("%7 to %9 stay", "%7%8%9", letters, "%7%8%9");
    row("percent sign before another character", "100% of %1, %x %", letters, "100% of a, %x %");
    row("two percent signs", "%%1", letters, "%a");
    row("percent sign and a blank before the digit", "% 1", letters, "% 1");
    row("removal makes a later placeholder", "%%12", { "", "b" }, "b");
    row("removal makes an earlier placeholder", "%%21", { "a", "" }, "%1");
    row("value that is a percent sign", "%1%2", { "%", "b" }, "%b");
    row("value and next digit make a later placeholder", "%13", { "%", "", "c" }, "c");
    row("digits of another script are no placeholder", "%\u0661", letters, "%\u0661");
}

void tst_MLDB::message()
{
    QFETCH(QString, defaultText);
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);

    QCOMPARE(
        MLDBGetMessage(QStringLiteral("A.B.C"), defaultText, arguments.value(0), arguments.value(1),
            arguments.value(2), arguments.value(3), arguments.value(4), arguments.value(5)),
        message);
}

void tst_MLDB::keyIsNotConsulted_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("known key") << QStringLiteral("ErrorManager.ErrorMessage.DivByZero");
    QTest::newRow("unknown key") << QStringLiteral("No.Such.Key");
    QTest::newRow("key with a placeholder") << QStringLiteral("%1.%2.%3");
    QTest::newRow("empty key") << QStringLiteral("");
    QTest::newRow("null key") << QString();
}

void tst_MLDB::keyIsNotConsulted()
{
    QFETCH(QString, key);

    const QString none;
    QCOMPARE(MLDBGetMessage(
                 key, QStringLiteral("Key %1"), QStringLiteral("x"), none, none, none, none, none),
        QStringLiteral("Key x"));
}

void tst_MLDB::argumentsStayAsTheyAre()
{
    const QString defaultText = QStringLiteral("%1 and %2");
    const QString first = QStringLiteral("%2");
    const QString second = QStringLiteral("b");
    const QString none = QStringLiteral("");
    QCOMPARE(MLDBGetMessage(none, defaultText, first, second, none, none, none, none),
        QStringLiteral("b and b"));
    QCOMPARE(defaultText, QStringLiteral("%1 and %2"));
    QCOMPARE(first, QStringLiteral("%2"));
    QCOMPARE(second, QStringLiteral("b"));
}

void tst_MLDB::helpPageIsNull_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("defaultPage");

    QTest::newRow("key and page") << QStringLiteral("Help.Main.Index")
                                  << QStringLiteral("index.html");
    QTest::newRow("known message key")
        << QStringLiteral("ErrorManager.ErrorMessage.Message") << QStringLiteral("%1");
    QTest::newRow("page alone") << QString() << QStringLiteral("index.html");
    QTest::newRow("nothing") << QString() << QString();
}

void tst_MLDB::helpPageIsNull()
{
    QFETCH(QString, key);
    QFETCH(QString, defaultPage);

    const QString page = MLDBGetHelpPage(key, defaultPage);
    QVERIFY(page.isNull());
    QVERIFY(page.isEmpty());
}

QTEST_GUILESS_MAIN(tst_MLDB)

#include "tst_MLDB.moc"
