// What a check counts and keeps when there is more of it than is usual.
#include "DataRows.h"
#include "PeakMemory.h"

using namespace tessel;

namespace {

// One record of lines without record types, an identification item of one column, and the items.
QByteArray oneRecordDictionary(const QByteArray& items)
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
           "[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=ID\nStart=1\nLen=1\n\n"
           "[Record]\nName=R\nRecordTypeValue=''\nMaxRecords=99999\n\n"
        + items;
}

// Of one variable of an SPSS or Stata file, with values outside its set.
CheckReport checkReals(const std::vector<double>& numbers)
{
    DataDictionary dictionary;
    DataVariable variable;
    variable.type = DataVariable::Type::Real;
    variable.record = 0;
    dictionary.variables.push_back(variable);
    DataRecord record;
    record.columns.append(0);
    dictionary.records.push_back(record);
    DataBatch batch;
    for (const double number : numbers) {
        const quint32 cell = batch.addCells(1);
        batch.setReal(cell, ValueState(ValueKind::Real, Special::None, true), number);
        batch.records.push_back({ 1, 0, 0, 0, cell, {} });
    }
    Checker checker(dictionary);
    checker.take(batch);
    checker.finish(CSProTextSource(dictionary, {}));
    return checker.report();
}

} // namespace

class TestDataCheckerLimits : public QObject {
    Q_OBJECT

private slots:
    void manyNodes();
    void distinctSmallOnes();
    void frequentOutsideCodes();
    void bothZeros();
    void exactReals();
    void outsideTextsAreBounded();
    void withoutIdentification();

private:
    CheckReport checkWith(
        const QByteArray& dictionary, const QByteArray& text, const CheckOptions& options = {});

    QTemporaryDir m_folder;
};

CheckReport TestDataCheckerLimits::checkWith(
    const QByteArray& dictionary, const QByteArray& text, const CheckOptions& options)
{
    CSProTextSource source(DataDictionary::fromBytes(dictionary, QStringLiteral("own")),
        { writeFile(m_folder, QStringLiteral("own.dat"), text) });
    Checker checker(source.dictionary(), options);
    if (!runPipeline(source, checker))
        qFatal("cancelled");
    return checker.report();
}

// 300,000 questionnaires of level 2 in one case; every thousandth lacks its record.
void TestDataCheckerLimits::manyNodes()
{
    constexpr int count = 300'000;
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=1\n\n"
        "[Record]\nName=HOUSE\nRecordTypeValue='1'\n\n[Item]\nName=ROOF\nStart=9\nLen=1\n\n"
        "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=3\nLen=6\n\n"
        "[Record]\nName=WOMAN\nRecordTypeValue='2'\n\n[Item]\nName=AGE\nStart=9\nLen=1\n\n"
        "[Record]\nName=BABY\nRecordTypeValue='3'\nRequired=No\n\n"
        "[Item]\nName=SEX\nStart=9\nLen=1\n\n";
    QByteArray text = "11      1\n";
    for (int i = 0; i < count; ++i) {
        const QByteArray rest = '1' + QByteArray::number(i).rightJustified(6) + "1\n";
        if (i % 1000 != 0)
            text += '2' + rest;
        text += '3' + rest;
    }
    const auto before = peakMemory();
    const CheckReport report = checkWith(dictionary, text);
    QVERIFY2(peakMemory() - before < 45'000, qPrintable(QString::number(peakMemory() - before)));
    QCOMPARE(report.problemCount(ProblemKind::MissingRecord), qint64(count / 1000));
    QCOMPARE(report.problemCount(ProblemKind::LevelWithoutParent), 0LL);
    QCOMPARE(report.problemCount(ProblemKind::TooManyRecords), 0LL);
}

// Codes below 512 are counted in another way, and by the same limit.
void TestDataCheckerLimits::distinctSmallOnes()
{
    QByteArray text;
    for (int i = 0; i < 900; ++i)
        text += "10101 1" + QByteArray::number(i % 2 ? i : 50'000 + i).rightJustified(5) + '\n';
    CheckOptions options;
    options.distinctLimit = 900; // 256 of them small
    QVERIFY(checkWith(surveyDictionary(), text, options).columns.at(3).hasAllDistinct);
    options.distinctLimit = 899;
    const ColumnReport column = checkWith(surveyDictionary(), text, options).columns.at(3);
    QVERIFY(!column.hasAllDistinct);
    QCOMPARE(column.distinct, 899LL);
}

// A code that comes after more different ones than are counted.
void TestDataCheckerLimits::frequentOutsideCodes()
{
    const QByteArray dictionary = oneRecordDictionary(
        "[Item]\nName=V\nStart=2\nLen=7\nDecimal=2\n\n[ValueSet]\nName=V1\nValue=1.00\n\n");
    QByteArray text;
    for (int i = 0; i < 1500; ++i)
        text += '1' + QByteArray::number(100'000 + i).rightJustified(7) + '\n';
    text += QByteArray("17777.77\n").repeated(5000);
    const ColumnReport column = checkWith(dictionary, text).columns.at(1);
    QCOMPARE(column.outside, 6500LL);
    QVERIFY(!column.hasAllOutsideCodes);
    QCOMPARE(column.outsideCodes.at(0).code, QStringLiteral("7777.77"));
    QCOMPARE(column.outsideCodes.at(0).count, 5000LL);
    QVERIFY(column.outsideCodes.at(0).uncertain > 0);
    const ColumnReport few = checkWith(dictionary, text.right(90)).columns.at(1);
    QVERIFY(few.hasAllOutsideCodes);
    QCOMPARE(few.outsideCodes.at(0).uncertain, 0LL);
}

// 0 and -0 are one value.
void TestDataCheckerLimits::bothZeros()
{
    QCOMPARE(checkReals({ 0.0, -0.0, 1.0 }).columns.front().distinct, 2LL);
}

// Doubles that differ in their last digit only are two values, and are told as such.
void TestDataCheckerLimits::exactReals()
{
    const CheckReport report =
        checkReals({ 1234567890123456.0, 1234567890123457.0, 1234567890123457.0 });
    const ColumnReport& column = report.columns.front();
    QCOMPARE(column.lowest, QStringLiteral("1234567890123456"));
    QCOMPARE(column.highest, QStringLiteral("1234567890123457"));
    QCOMPARE(column.outsideCodes.size(), 2);
    QCOMPARE(column.outsideCodes.at(0).code, QStringLiteral("1234567890123457"));
    QCOMPARE(column.outsideCodes.at(0).count, 2LL);
    QCOMPARE(report.samples.front().value, QStringLiteral("1234567890123456"));
}

// 500 columns of long texts, each of which is in no value set.
void TestDataCheckerLimits::outsideTextsAreBounded()
{
    constexpr int columns = 500;
    constexpr int width = 60;
    QByteArray items;
    for (int i = 0; i < columns; ++i) {
        const QByteArray number = QByteArray::number(i);
        items += "[Item]\nName=V" + number + "\nStart=" + QByteArray::number(2 + i * width)
            + "\nLen=" + QByteArray::number(width) + "\nDataType=Alpha\n\n[ValueSet]\nName=S"
            + number + "\nValue='a'\n\n";
    }
    QByteArray text;
    for (int line = 0; line < 600; ++line) {
        QByteArray cell = QByteArray(width - 5, 'x') + QByteArray::number(10'000 + line);
        text += '1' + cell.repeated(columns) + '\n';
    }
    checkWith(oneRecordDictionary(items), text.left(text.indexOf('\n') + 1));
    const auto before = peakMemory();
    const CheckReport report = checkWith(oneRecordDictionary(items), text);
    QVERIFY2(peakMemory() - before < 60'000, qPrintable(QString::number(peakMemory() - before)));
    QCOMPARE(report.columns.at(columns).outside, 600LL);
    QCOMPARE(report.columns.at(1).outsideCodes.size(), 5);
}

// No case is known, so that nothing is too much in it, or missing.
void TestDataCheckerLimits::withoutIdentification()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
        "[Level]\nName=L\n\n[IdItems]\n\n"
        "[Record]\nName=A\nRecordTypeValue='1'\n\n[Item]\nName=V\nStart=2\nLen=1\n\n"
        "[Record]\nName=B\nRecordTypeValue='2'\n\n[Item]\nName=W\nStart=2\nLen=1\n\n";
    const CheckReport report = checkWith(dictionary, "11\n11\n22\n22\n11\n");
    QVERIFY(report.isClean(true));
    QCOMPARE(report.counts.cases, 5LL);
}

QTEST_GUILESS_MAIN(TestDataCheckerLimits)
#include "tst_DataCheckerLimits.moc"
