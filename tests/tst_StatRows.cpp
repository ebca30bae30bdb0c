#include "StatFiles.h"

#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/StatRows.h>

#include <QTemporaryDir>
#include <QtTest>

class tst_StatRows : public QObject {
    Q_OBJECT

private slots:
    void codes();
    void rows_data();
    void rows();
    void otherNames();
    void cutRows();
};

void tst_StatRows::codes()
{
    const TStatCodes codes({ "1", "2.5", "A ", "" });
    QVERIFY(codes.contains(realValue(1)));
    QVERIFY(codes.contains(integerValue(1)));
    QVERIFY(codes.contains(realValue(2.5)));
    QVERIFY(!codes.contains(realValue(0)));
    QVERIFY(codes.contains(textValue("A")));
    QVERIFY(codes.contains(textValue("A   ")));
    QVERIFY(codes.contains(textValue("1"))); // a number's text as well
    QVERIFY(!codes.contains(textValue("a")));
    QVERIFY(!codes.contains(textValue(" A")));
}

namespace {

const auto oneToTwo = std::make_shared<const TStatCodes>(QStringList({ "1", "2" }));
const auto two = std::make_shared<const TStatCodes>(QStringList("2"));
const auto letter = std::make_shared<const TStatCodes>(QStringList("A"));

QVector<TStatCodedVariable> variables()
{
    return { { "LISTED", oneToTwo }, { "OTHERS", two }, { "UNCODED", nullptr },
        { "WORD", letter } };
}

QString written(const QTemporaryDir& folder, TStatFileKind kind, double number, int rows)
{
    StatFileWriter writer;
    const char* format = kind == TStatFileKind::Spss ? "F1.0" : "%9.0g";
    for (const char* name : { "LISTED", "OTHERS", "UNCODED" })
        writer.add(name, READSTAT_TYPE_DOUBLE, format);
    writer.add(
        "WORD", READSTAT_TYPE_STRING, kind == TStatFileKind::Spss ? "A8" : "%8s", nullptr, 8);
    writer.setNumber(number);
    writer.setFirstText("A");
    QString path = folder.filePath("rows");
    return writer.write(path, kind, rows) ? path : QString();
}

} // namespace

void tst_StatRows::rows_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("SPSS") << int(TStatFileKind::Spss);
    QTest::newRow("Stata") << int(TStatFileKind::Stata);
}

void tst_StatRows::rows()
{
    QFETCH(int, kind);
    const auto fileKind = static_cast<TStatFileKind>(kind);
    const QTemporaryDir folder;
    TStatInput input;
    QVERIFY(input.open(written(folder, fileKind, 1, 3)));
    QVector<TStatCodedVariable> found = variables();
    QVERIFY(compareRows(input, fileKind, found));
    QVERIFY(found.at(0).hasOnlyCodes());
    QVERIFY(found.at(1).hasValues && found.at(1).hasOthers);
    QVERIFY(!found.at(2).hasValues);
    QVERIFY(found.at(3).hasOnlyCodes()); // its blanks are missing

    QVERIFY(input.open(written(folder, fileKind, NAN, 3)));
    found = variables();
    QVERIFY(compareRows(input, fileKind, found));
    QVERIFY(!found.at(0).hasOnlyCodes()); // without values nothing is learnt
    QVERIFY(describeFailure(input).isNull());
}

void tst_StatRows::otherNames()
{
    const QTemporaryDir folder;
    TStatInput input;
    QVERIFY(input.open(written(folder, TStatFileKind::Stata, 1, 3)));
    QVector<TStatCodedVariable> found = variables();
    found[0].name = "OTHER";
    QVERIFY(compareRows(input, TStatFileKind::Stata, found));
    QVERIFY(!found.at(0).hasValues);
    found.clear();
    QVERIFY(compareRows(input, TStatFileKind::Stata, found));
}

void tst_StatRows::cutRows()
{
    const QTemporaryDir folder;
    QFile file(written(folder, TStatFileKind::Stata, 1, 1000));
    QVERIFY(file.resize(file.size() / 2));
    TStatInput input;
    QVERIFY(input.open(file.fileName()));
    QVector<TStatCodedVariable> found = variables();
    QVERIFY(!compareRows(input, TStatFileKind::Stata, found));
    QVERIFY(input.open(written(folder, TStatFileKind::Stata, 1, 1000)));
    QVERIFY(QFile::resize(folder.filePath("rows"), 100));
    QVERIFY(!compareRows(input, TStatFileKind::Stata, found));
    QVERIFY(describeFailure(input).startsWith("cannot be read: it was changed"));
}

QTEST_APPLESS_MAIN(tst_StatRows)
#include "tst_StatRows.moc"
