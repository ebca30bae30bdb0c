#include <tessel_data/StatNames.h>

#include <QtTest>

using namespace tessel;

Q_DECLARE_METATYPE(StatProgram)

class tst_DataStatNames : public QObject {
    Q_OBJECT

private slots:
    void name_data();
    void name();
    void reasonsAreTold();
    void caseClashes();
    void longNamesStayApart_data();
    void longNamesStayApart();
    void anyNameIsTaken();
    void textIsCut_data();
    void textIsCut();
    void limits();
};

namespace {

const StatProgram programs[] = { StatProgram::Stata, StatProgram::Spss, StatProgram::Sas,
    StatProgram::R };

QString letters(int count)
{
    return QString(count, QLatin1Char('A'));
}

} // namespace

void tst_DataStatNames::name_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QStringList>("names"); // of Stata, SPSS, SAS, R
    const auto row = [](const char* title, const char* wanted, const char* stata, const char* spss,
                         const char* sas, const char* r) {
        QTest::newRow(title) << QString::fromUtf8(wanted)
                             << QStringList { QString::fromUtf8(stata), QString::fromUtf8(spss),
                                    QString::fromUtf8(sas), QString::fromUtf8(r) };
    };
    row("plain", "AGE_1", "AGE_1", "AGE_1", "AGE_1", "AGE_1");
    row("empty", "", "unnamed", "unnamed", "unnamed", "unnamed");
    row("digit first", "2ND", "v2ND", "v2ND", "v2ND", "2ND");
    row("underscore first", "_AGE", "_AGE", "v_AGE", "_AGE", "_AGE");
    row("points", "A.B", "A_B", "A.B", "A_B", "A.B");
    row("point at the end", "A.", "A_", "A_", "A_", "A.");
    row("at sign", "@A", "_A", "@A", "_A", "@A");
    row("scratch variable", "#A", "_A", "v#A", "_A", "#A");
    row("system variable", "$A", "_A", "v$A", "_A", "$A");
    row("blank and code", "a b;x=1", "a_b_x_1", "a_b_x_1", "a_b_x_1", "a b;x=1");
    row("accent", "\u00c9T\u00c9", "\u00c9T\u00c9", "\u00c9T\u00c9", "_T_", "\u00c9T\u00c9");
    row("Arabic", "\u0639\u0645\u0631", "\u0639\u0645\u0631", "\u0639\u0645\u0631", "___",
        "\u0639\u0645\u0631");
    row("emoji", "A\U0001F600B", "A_B", "A_B", "A_B", "A\U0001F600B");
    row("SPSS word", "with", "vwith", "vwith", "with", "with");
    row("SPSS word in capitals", "WITH", "WITH", "vWITH", "WITH", "WITH");
    row("Stata word", "if", "vif", "if", "if", "if");
    row("Stata type", "str12", "vstr12", "str12", "str12", "str12");
    row("Stata type that is none", "str", "str", "str", "str", "str");
    row("Stata letter", "_n", "v_n", "v_n", "_n", "_n");
    row("SAS variable", "_N_", "_N_", "v_N_", "v_N_", "_N_");
    row("SAS operator", "NE", "NE", "vNE", "vNE", "NE");
    row("null character", "A", "A", "A", "A", "A");
}

void tst_DataStatNames::name()
{
    QFETCH(QString, wanted);
    QFETCH(QStringList, names);
    for (int i = 0; i < 4; ++i) {
        const StatName made = StatNames(programs[i]).take(wanted);
        QCOMPARE(made.name, names.at(i));
        QCOMPARE(made.isChanged(), made.name != wanted);
    }
}

void tst_DataStatNames::reasonsAreTold()
{
    using Reason = StatNameReason;
    StatNames names(StatProgram::Stata);
    QVERIFY(names.take("AGE").reasons.isEmpty());
    QCOMPARE(names.take("AGE").reasons, QVector<Reason> { Reason::Taken });
    QCOMPARE(names.take("if").reasons, QVector<Reason> { Reason::ReservedWord });
    const QVector<Reason> all { Reason::NotAllowed, Reason::Beginning, Reason::TooLong };
    QCOMPARE(names.take('1' + letters(40) + ' ').reasons, all);
    QCOMPARE(reasonText(all, StatProgram::Stata),
        QString("Stata does not take its name, names of Stata do not begin so, names of Stata have "
                "at most 32 characters"));
    QCOMPARE(reasonText({ Reason::TooLong }, StatProgram::Spss),
        QString("names of SPSS have at most 64 bytes"));
    QCOMPARE(reasonText({ Reason::ReservedWord, Reason::Taken }, StatProgram::Sas),
        QString("its name is a reserved word of SAS, its name is taken"));
    const QString null(QChar(0));
    QCOMPARE(StatNames(StatProgram::R).take(null).name, QString(QChar(0x2400)));
}

void tst_DataStatNames::caseClashes()
{
    const QStringList second { "age", "age_2", "age_2", "age" };
    for (int i = 0; i < 4; ++i) {
        StatNames names(programs[i]);
        QCOMPARE(names.take("Age").name, QString("Age"));
        QCOMPARE(names.take("age").name, second.at(i));
        QCOMPARE(names.take("age_2").name, QString(i == 1 || i == 2 ? "age_2_2" : "age_2"));
    }
}

void tst_DataStatNames::longNamesStayApart_data()
{
    QTest::addColumn<StatProgram>("program");
    QTest::addColumn<QString>("letter");
    QTest::newRow("Stata") << StatProgram::Stata << "A";
    QTest::newRow("Stata, letters of two bytes") << StatProgram::Stata << QString(QChar(0xC9));
    QTest::newRow("SPSS") << StatProgram::Spss << "A";
    QTest::newRow("SPSS, letters of two bytes") << StatProgram::Spss << QString(QChar(0xC9));
    QTest::newRow("SAS") << StatProgram::Sas << "A";
}

void tst_DataStatNames::longNamesStayApart()
{
    QFETCH(StatProgram, program);
    QFETCH(QString, letter);
    StatNames names(program);
    QSet<QString> taken;
    const StatLimit limit = statNameLimit(program);
    for (int i = 1; i <= 300; ++i) {
        const QString number = QStringLiteral("_%1").arg(i);
        const StatName occurrence = names.take(letter.repeated(70) + number);
        QVERIFY2(occurrence.name.endsWith(number), qPrintable(occurrence.name));
        for (const StatName& made : { occurrence, names.take(letter.repeated(70)) }) {
            QVERIFY(made.reasons.contains(StatNameReason::TooLong));
            const int size = limit.isInBytes ? made.name.toUtf8().size() : made.name.size();
            QVERIFY2(size <= limit.most, qPrintable(made.name));
            taken.insert(made.name.toLower());
        }
    }
    QCOMPARE(taken.size(), 600);
}

// What comes out needs no quotes, whatever goes in.
void tst_DataStatNames::anyNameIsTaken()
{
    const QRegularExpression stata(
        "^[\\p{L}_][\\p{L}0-9_]{0,31}$", QRegularExpression::UseUnicodePropertiesOption);
    const QRegularExpression spss("^[\\p{L}@]([\\p{L}0-9_.@#$]*[\\p{L}0-9_@#$])?$",
        QRegularExpression::UseUnicodePropertiesOption);
    const QRegularExpression sas("^[A-Za-z_][A-Za-z0-9_]{0,31}$");
    quint32 seed = 7;
    for (int i = 0; i < 3000; ++i) {
        QString wanted;
        for (int length = int(seed % 90); length > 0; --length) {
            seed = seed * 1664525 + 1013904223;
            wanted += seed % 3 == 0 ? QChar(ushort(seed >> 12)) : QChar(ushort((seed >> 12) % 128));
        }
        seed = seed * 1664525 + 1013904223;
        QVERIFY(stata.match(StatNames(StatProgram::Stata).take(wanted).name).hasMatch());
        const QString name = StatNames(StatProgram::Spss).take(wanted).name;
        QVERIFY2(spss.match(name).hasMatch() && name.toUtf8().size() <= 64, qPrintable(name));
        QVERIFY(sas.match(StatNames(StatProgram::Sas).take(wanted).name).hasMatch());
    }
    const QString point = letters(63) + ".B";
    QCOMPARE(StatNames(StatProgram::Spss).take(point).name, letters(63) + '_');
}

void tst_DataStatNames::textIsCut_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("most");
    QTest::addColumn<QString>("characters");
    QTest::addColumn<QString>("bytes");
    QTest::newRow("fits") << "abc" << 3 << "abc"
                          << "abc";
    QTest::newRow("letters") << "abcd" << 3 << "abc"
                             << "abc";
    QTest::newRow("two bytes") << QString::fromUtf8("\u00e9\u00e9\u00e9") << 3
                               << QString::fromUtf8("\u00e9\u00e9\u00e9")
                               << QString::fromUtf8("\u00e9");
    QTest::newRow("two halves") << QString::fromUtf8("a\U0001F600b") << 2
                                << QString::fromUtf8("a\U0001F600") << "a";
    QTest::newRow("any") << "abc" << 0 << "abc"
                         << "abc";
}

void tst_DataStatNames::textIsCut()
{
    QFETCH(QString, text);
    QFETCH(int, most);
    QTEST(statText(text, { most, false }), "characters");
    QTEST(statText(text, { most, true }), "bytes");
}

void tst_DataStatNames::limits()
{
    QCOMPARE(statLabelLimit(StatProgram::Stata).most, 80);
    QVERIFY(!statLabelLimit(StatProgram::Stata).isInBytes);
    QCOMPARE(statLabelLimit(StatProgram::Spss).most, 256);
    QCOMPARE(statLabelLimit(StatProgram::Sas).most, 256);
    QCOMPARE(statLabelLimit(StatProgram::R).most, 0);
    QCOMPARE(statValueLabelLimit(StatProgram::Stata).most, 32000);
    QCOMPARE(statValueLabelLimit(StatProgram::Spss).most, 120);
    QVERIFY(statValueLabelLimit(StatProgram::Spss).isInBytes);
    QCOMPARE(statProgramName(StatProgram::Sas), QString("SAS"));
}

QTEST_GUILESS_MAIN(tst_DataStatNames)
#include "tst_DataStatNames.moc"
