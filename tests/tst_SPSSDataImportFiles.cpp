#include "DebugLines.h"
#include "StatFiles.h"

#include <model_Tessel/SPSSDataImport.h>

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// "open FILE": opens the file.
int childMain(const QStringList& arguments)
{
    if (arguments.value(0) != QLatin1String("open"))
        return -2;
    TSPSSDataImport importer(arguments.value(1));
    return importer.openFile() ? importer.fields->size() : -1;
}

} // namespace

class TestSPSSDataImportFiles : public QObject {
    Q_OBJECT

private slots:
    void init();

    void opensAFile();
    void fileWithoutLabelsHasDefaultBounds();
    void readsLabelsBeforeVariables();
    void longTextVariablesHaveNoLabels();
    void openingTwiceDoublesTheFields();
    void labelsAreEmptiedBeforeEachRead();
    void openReadTakesAnyFile();
    void opensCompressedFiles_data();
    void opensCompressedFiles();
    void opensANameBeyondAscii();
    void unreadableFileGivesNoFields_data();
    void unreadableFileGivesNoFields();
    void selectLayoutSourceListsTheNames();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSPSSDataImportFiles::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestSPSSDataImportFiles::opensAFile()
{
    StatFileWriter writer;
    readstat_label_set_t* sexes = writer.addLabels("SEXES", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(sexes, 1, "Male");
    readstat_label_double_value(sexes, 2, "Female");
    readstat_label_set_t* areas = writer.addLabels("AREAS", READSTAT_TYPE_STRING);
    readstat_label_string_value(areas, "N", "North");
    readstat_label_string_value(areas, "S", "South");
    readstat_variable_set_label(
        writer.add("SEX", READSTAT_TYPE_DOUBLE, "F3.0", sexes), u8"Sex of the señor");
    writer.add("INCOME", READSTAT_TYPE_DOUBLE, "F10.2");
    writer.add("AREA", READSTAT_TYPE_STRING, "A1", areas, 1);
    writer.add("BIRTH", READSTAT_TYPE_DOUBLE, "DATE11");
    writer.add("NAME", READSTAT_TYPE_STRING, "A300", nullptr, 300);
    const QString file = path(QStringLiteral("people.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss, 3));

    TSPSSDataImport importer(file);
    importer.importRatio = 0;
    QVERIFY(importer.openFile());
    QCOMPARE(importer.importRatio, 1.0);
    QCOMPARE(importer.fields->size(), 5);
    QCOMPARE(importer.collectedFields.size(), std::size_t(5));
    QCOMPARE(importer.variablesByName.size(), std::size_t(5));
    QCOMPARE(importer.labelSets.size(), std::size_t(2));

    const TGenericField* sex = importer.getField(0);
    QVERIFY(dynamic_cast<const TSPSSVariable*>(sex));
    QCOMPARE(sex->name, QStringLiteral("SEX"));
    QCOMPARE(sex->label, QString::fromUtf8(u8"Sex of the señor"));
    QCOMPARE(sex->fieldType, 1);
    QCOMPARE(sex->length, 3);
    QCOMPARE(sex->valueLabels, QStringLiteral("1 Male\t2 Female\t"));
    QCOMPARE(sex->minValue, QStringLiteral("1"));
    QCOMPARE(sex->maxValue, QStringLiteral("2"));

    const TGenericField* income = importer.fieldByName(QStringLiteral("INCOME"));
    QCOMPARE(income, importer.getField(1));
    QCOMPARE(income->length, 1);
    QCOMPARE(income->minValue, QStringLiteral("0"));
    QCOMPARE(income->maxValue, QStringLiteral("9"));
    QVERIFY(income->label.isEmpty());

    const TGenericField* area = importer.getField(2);
    QCOMPARE(area->fieldType, 3);
    QCOMPARE(area->length, 1);
    QCOMPARE(area->valueLabels, QStringLiteral("N North\tS South\t"));
    QVERIFY(area->minValue.isEmpty() && area->maxValue.isEmpty());

    const TGenericField* birth = importer.getField(3);
    QCOMPARE(birth->fieldType, 1);
    QCOMPARE(birth->length, 0);
    QCOMPARE(birth->minValue, QStringLiteral("0"));
    QVERIFY(birth->maxValue.isEmpty());

    QCOMPARE(importer.getField(4)->name, QStringLiteral("NAME"));
    QCOMPARE(importer.getField(4)->length, 3);
}

void TestSPSSDataImportFiles::fileWithoutLabelsHasDefaultBounds()
{
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0");
    const QString file = path(QStringLiteral("plain.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    QVERIFY(importer.openFile());
    QVERIFY(importer.labelSets.empty());
    QVERIFY(importer.getField(0)->valueLabels.isEmpty());
    QCOMPARE(importer.getField(0)->minValue, QStringLiteral("0"));
    QCOMPARE(importer.getField(0)->maxValue, QStringLiteral("99999"));
}

void TestSPSSDataImportFiles::readsLabelsBeforeVariables()
{
    StatFileWriter writer;
    readstat_label_set_t* shared = writer.addLabels("SHARED", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(shared, -1, "minus one");
    readstat_label_double_value(shared, 1.5, "one and a half");
    readstat_label_set_t* own = writer.addLabels("OWN", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(own, 9, "nine");
    for (const char* name : { "A", "B", "C" })
        writer.add(name, READSTAT_TYPE_DOUBLE, "F2.0", shared);
    writer.add("D", READSTAT_TYPE_DOUBLE, "F2.0", own);
    writer.add("E", READSTAT_TYPE_DOUBLE, "F2.0", shared);
    const QString file = path(QStringLiteral("shared.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));

    TSPSSDataImport importer(file);
    importer.openFile();
    QCOMPARE(importer.fields->size(), 5);
    for (const int index : { 0, 1, 2, 4 }) {
        QCOMPARE(importer.getField(index)->valueLabels, QStringLiteral("1 one and a half\t"));
        QCOMPARE(importer.getField(index)->minValue, QStringLiteral("1"));
    }
    QCOMPARE(importer.getField(3)->valueLabels, QStringLiteral("9 nine\t"));
    const TStatValueLabel* record = importer.labelSets.at("labels0").at(1);
    QCOMPARE(record->intValue, 1);
    QCOMPARE(record->numValue, -1.0);
}

void TestSPSSDataImportFiles::longTextVariablesHaveNoLabels()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_STRING);
    readstat_label_string_value(labels, "abcdefghijkl", "first");
    writer.add("A", READSTAT_TYPE_STRING, "A20", labels, 20);
    const QString file = path(QStringLiteral("long.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    importer.openFile();
    // The set was read, but the pass that reads the variables is not told of it.
    QCOMPARE(importer.labelSets.size(), std::size_t(1));
    QVERIFY(importer.getField(0)->valueLabels.isEmpty());
}

void TestSPSSDataImportFiles::openingTwiceDoublesTheFields()
{
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0");
    writer.add("B", READSTAT_TYPE_DOUBLE, "F5.0");
    const QString file = path(QStringLiteral("two.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    QVERIFY(importer.openFile());
    TGenericField* first = importer.getField(0);
    QVERIFY(importer.openFile());
    QCOMPARE(importer.collectedFields.size(), std::size_t(4));
    QCOMPARE(importer.fields->size(), 4);
    QStringList names;
    for (const TGenericField* field : qAsConst(*importer.fields))
        names.append(field->name);
    QCOMPARE(names.join(QLatin1Char(' ')), QStringLiteral("A B A B"));
    QCOMPARE(importer.getField(0), first);
    QCOMPARE(importer.fieldByName(QStringLiteral("A")), importer.getField(2));
}

void TestSPSSDataImportFiles::labelsAreEmptiedBeforeEachRead()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, 1, "one");
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0", labels);
    const QString file = path(QStringLiteral("labels.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    importer.openFile();
    importer.labelSets["stale"];
    importer.openFile();
    QCOMPARE(importer.labelSets.size(), std::size_t(1));
    QCOMPARE(importer.labelSets.begin()->second.size(), std::size_t(1));
    QCOMPARE(importer.getField(1)->valueLabels, QStringLiteral("1 one\t"));
}

void TestSPSSDataImportFiles::openReadTakesAnyFile()
{
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0");
    const QString file = path(QStringLiteral("any name"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(QStringLiteral("other"));
    importer.openRead(file);
    QCOMPARE(importer.fields->size(), 1);
    QCOMPARE(importer.sourceName, QStringLiteral("other"));
    importer.openRead(file); // the list of fields is the caller's to empty
    QCOMPARE(importer.fields->size(), 3);
}

void TestSPSSDataImportFiles::opensCompressedFiles_data()
{
    QTest::addColumn<int>("compression");
    QTest::newRow("none") << int(READSTAT_COMPRESS_NONE);
    QTest::newRow("rows") << int(READSTAT_COMPRESS_ROWS);
    QTest::newRow("whole data") << int(READSTAT_COMPRESS_BINARY);
}

void TestSPSSDataImportFiles::opensCompressedFiles()
{
    QFETCH(int, compression);
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0");
    QCOMPARE(readstat_writer_set_compression(
                 writer.get(), static_cast<readstat_compress_t>(compression)),
        READSTAT_OK);
    const QString file = path(QStringLiteral("compressed"));
    QVERIFY(writer.write(file, TStatFileKind::Spss, 5));
    TSPSSDataImport importer(file);
    importer.openFile();
    QCOMPARE(importer.fields->size(), 1);
}

void TestSPSSDataImportFiles::opensANameBeyondAscii()
{
    const QString file = path(QString::fromUtf8(u8"población año.sav"));
    if (QString::fromLocal8Bit(file.toLocal8Bit()) != file)
        QSKIP("the encoding of this locale cannot hold the file's name");
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0");
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    importer.openFile();
    QCOMPARE(importer.fields->size(), 1);
}

void TestSPSSDataImportFiles::unreadableFileGivesNoFields_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("folder") << QStringLiteral(".");
    QTest::newRow("empty") << QStringLiteral("empty");
    QTest::newRow("other kind") << QStringLiteral("text");
}

void TestSPSSDataImportFiles::unreadableFileGivesNoFields()
{
    QFETCH(QString, name);
    QVERIFY(QFile(path(QStringLiteral("empty"))).open(QIODevice::WriteOnly));
    QFile text(path(QStringLiteral("text")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write(QByteArray(2000, 'x'));
    text.close();

    TSPSSDataImport importer(path(name));
    QVERIFY(importer.openFile());
    QVERIFY(importer.fields->isEmpty());

    const ChildResult child = runChild({ QStringLiteral("open"), path(name) });
    QVERIFY(child.hasFinished && !child.hasCrashed);
    QCOMPARE(child.exitCode, 0);
    QCOMPARE(child.output, QByteArray());
    QCOMPARE(child.errors, QByteArray());
}

void TestSPSSDataImportFiles::selectLayoutSourceListsTheNames()
{
    StatFileWriter writer;
    writer.add("B", READSTAT_TYPE_DOUBLE, "F5.0");
    writer.add("A", READSTAT_TYPE_STRING, "A5", nullptr, 5);
    const QString file = path(QStringLiteral("names.sav"));
    QVERIFY(writer.write(file, TStatFileKind::Spss));
    TSPSSDataImport importer(file);
    const DebugLines debugLines;
    const std::unique_ptr<QStringList> names(importer.selectLayoutSource());
    QCOMPARE(*names, QStringList({ QStringLiteral("B"), QStringLiteral("A") }));
    QCOMPARE(debugLines.lines(), QStringList(QStringLiteral("DataImport - selectLayoutSource")));
}

STAT_TEST_MAIN(TestSPSSDataImportFiles, childMain)
#include "tst_SPSSDataImportFiles.moc"
