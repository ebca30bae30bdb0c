// Reads files that "tessel convert" made back cell by cell and compares them with a slice of their
// own: the layout from the dictionary's reader, columns cut out of decoded lines.
#include "RunTessel.h"
#include "SlicedData.h"
#include "StatContents.h"

#include <QtTest>

class tst_ConvertCommand : public QObject {
    Q_OBJECT

private slots:
    void init();
    void everyCell_data();
    void everyCell();
    void sameFromPipe_data();
    void sameFromPipe();
    void existingFiles();
    void missingFolder();
    void settingsOfABuild();
    void savedSettings();
    void savedSettingsAreSpared();
    void planMakesNothing();
    void strict();

private:
    QString folder() const
    {
        return m_folder->filePath("out");
    }
    QStringList leftBehind() const
    {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    Outcome convert(const QStringList& sources, const QStringList& more) const
    {
        return runTessel(
            QStringList { "convert" } + sources + QStringList { "-o", folder() } + more);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

QString example(const char* name)
{
    return QString(TESSEL_EXAMPLES "/") + name;
}

// The codes of an item's first value set that mean missing, in its order.
QStringList missingCodes(const TCSProItem& item)
{
    QStringList codes;
    if (!item.getHasValueSet())
        return codes;
    const TCSProValueSet& set = *item.getValueSet(0);
    for (const TValueSetItem* entry : qAsConst(*set.items)) {
        if (entry->special && entry->type <= 3
            && (item.isAlpha || !entry->code.trimmed().isEmpty()))
            codes.append(item.isAlpha ? entry->code.trimmed()
                                      : StatContents::numberText(entry->code.toDouble()));
    }
    return codes;
}

// The labels that a file of the format can hold.
QMap<QString, QString> expectedLabels(const TCSProItem& item, bool isStata)
{
    QMap<QString, QString> labels;
    if (!item.getHasValueSet() || (item.isAlpha && isStata))
        return labels;
    const TCSProValueSet& set = *item.getValueSet(0);
    const QStringList missing = isStata ? missingCodes(item) : QStringList();
    for (const TValueSetItem* entry : qAsConst(*set.items)) {
        const QString label = entry->label.section('|', 0, 0);
        const QString code = entry->code.trimmed();
        if ((code.isEmpty() && !item.isAlpha) || !set.detail(entry).highCode.isNull())
            continue;
        const double number = code.toDouble();
        const int kind = missing.indexOf(StatContents::numberText(number));
        if (item.isAlpha)
            labels.insert(code, label);
        else if (kind >= 0)
            labels.insert(QString(".") + QChar('a' + kind), label);
        else if (!isStata || number == std::floor(number))
            labels.insert(StatContents::numberText(number), label);
    }
    return labels;
}

// A cell of the slice as the file is to hold it.
QString expectedCell(const QString& cell, const TCSProItem& item, bool isStata)
{
    if (cell.isNull() || item.isAlpha)
        return cell;
    const QString number = StatContents::numberText(cell.toDouble());
    const int kind = isStata ? missingCodes(item).indexOf(number) : -1;
    return kind < 0 ? number : QString(".") + QChar('a' + kind);
}

} // namespace

void tst_ConvertCommand::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_ConvertCommand::everyCell_data()
{
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<QString>("data");
    QTest::addColumn<QString>("format");
    const auto add = [](const QString& dictionary, const QString& data) {
        for (const char* format : { "stata", "spss" }) {
            const QString name = QFileInfo(dictionary).fileName() + ' ' + format;
            QTest::newRow(qPrintable(name)) << dictionary << data << format;
        }
    };
    add(example("census.dcf"), example("census.dat"));
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    for (const char* folder : { "cspro", "cspro-json" }) {
        const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS") + '/' + folder);
        for (const QString& name : corpus.entryList({ "*.dcf" })) {
            const QString data = corpus.filePath(QFileInfo(name).completeBaseName() + ".dat");
            if (QFile::exists(data))
                add(corpus.filePath(name), data);
        }
    }
}

void tst_ConvertCommand::everyCell()
{
    QFETCH(QString, dictionary);
    QFETCH(QString, data);
    QFETCH(QString, format);
    const bool isStata = format == "stata";
    const Outcome outcome = convert({ dictionary, data }, { "--to", format });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const Slice slice(dictionary, data);
    for (const QString& record : slice.recordNames()) {
        const StatContents found =
            StatContents::read(folder() + '/' + record + (isStata ? ".dta" : ".sav"));
        QCOMPARE(found.error, 0);
        const QVector<const TCSProItem*> items = slice.itemsOf(record);
        QCOMPARE(found.variables.size(), items.size());
        const QVector<QStringList> rows = slice.rowsOf(record);
        QCOMPARE(found.rows.size(), rows.size());
        for (int i = 0; i < items.size(); ++i) {
            const StatContents::Variable& variable = found.variables.at(i);
            QCOMPARE(variable.name, items.at(i)->name.left(isStata ? 32 : 64));
            QCOMPARE(found.labels.value(variable.set), expectedLabels(*items.at(i), isStata));
            if (!isStata && missingCodes(*items.at(i)).size() <= 3)
                QCOMPARE(variable.missing, missingCodes(*items.at(i)));
            for (int r = 0; r < rows.size(); ++r) {
                const QString expected = expectedCell(rows.at(r).at(i + 2), *items.at(i), isStata);
                if (found.rows.at(r).at(i) != expected)
                    QFAIL(qPrintable(QString("%1, row %2, %3: %4 in place of %5")
                                         .arg(record, QString::number(r + 1), variable.name,
                                             found.rows.at(r).at(i), expected)));
            }
        }
    }
}

void tst_ConvertCommand::sameFromPipe_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("stata") << "stata";
    QTest::newRow("spss") << "spss";
}

// Rows of a file in ASCII are written as they come, those of a pipe are kept before.
void tst_ConvertCommand::sameFromPipe()
{
    QFETCH(QString, format);
    const QByteArray dictionary =
        readFile(example("census.dcf")).replace("Label=Person", "Label=<map><N>></N>");
    QByteArray data;
    for (const QByteArray& line : readFile(example("census.dat")).split('\n')) {
        const bool isAscii = std::all_of(
            line.begin(), line.end(), [](char byte) { return static_cast<uchar>(byte) < 0x80; });
        if (isAscii && !line.isEmpty())
            data += line + '\n';
    }
    const QString folder = m_folder->path();
    QVERIFY(writeFile(folder + "/d.dcf", dictionary) && writeFile(folder + "/d.dat", data));
    const Outcome fromFile = convert({ folder + "/d.dcf", folder + "/d.dat" }, { "--to", format });
    QVERIFY2(fromFile.status == 0, fromFile.errors.constData());
    const Outcome fromPipe = runTessel(
        { "convert", folder + "/d.dcf", "-", "--to", format, "-o", folder + "/pipe" }, data);
    QVERIFY2(fromPipe.status == 0, fromPipe.errors.constData());
    QCOMPARE(leftBehind().size(), 3);
    for (const QString& name : leftBehind()) {
        const StatContents first = StatContents::read(this->folder() + '/' + name);
        const StatContents second = StatContents::read(folder + "/pipe/" + name);
        QCOMPARE(first.error, 0);
        QVERIFY(first.rows.size() > 100);
        QCOMPARE(first.label, second.label);
        QCOMPARE(first.rows, second.rows);
        QCOMPARE(first.labels, second.labels);
        constexpr int timeAt = 92;
        constexpr int timeSize = 17;
        QByteArray direct = readFile(this->folder() + '/' + name);
        QByteArray kept = readFile(folder + "/pipe/" + name);
        if (format != "spss")
            continue;
        QCOMPARE(direct.size(), kept.size()); // the end of rows is marked when it is known only
        const int compared = kept.size() - 9 * 8; // eight codes and what they stand for
        direct.remove(timeAt, timeSize);
        kept.remove(timeAt, timeSize);
        QVERIFY(direct.left(compared - timeSize) == kept.left(compared - timeSize));
    }
}

void tst_ConvertCommand::existingFiles()
{
    QVERIFY(QDir().mkpath(folder()));
    QVERIFY(writeFile(folder() + "/PERSON.dta", "mine"));
    const QStringList census { example("census.dcf"), example("census.dat") };
    const Outcome refused = convert(census, { "--to", "stata" });
    QCOMPARE(refused.status, 1);
    QVERIFY2(
        refused.errors.contains("PERSON.dta: error: is there already"), refused.errors.constData());
    QCOMPARE(leftBehind(), QStringList { "PERSON.dta" });
    QCOMPARE(readFile(folder() + "/PERSON.dta"), QByteArray("mine"));
    const Outcome replaced = convert(census, { "--to", "stata", "--overwrite" });
    QVERIFY2(replaced.status == 0, replaced.errors.constData());
    QCOMPARE(leftBehind(), (QStringList { "HOUSEHOLD.dta", "LIVESTOCK.dta", "PERSON.dta" }));
    QCOMPARE(StatContents::read(folder() + "/PERSON.dta").rows.size(), 4299);
}

void tst_ConvertCommand::missingFolder()
{
    const Outcome outcome = runTessel({ "convert", example("census.dcf"), example("census.dat"),
        "--to", "spss", "-o", folder() + "/deep/er" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cannot be made"), outcome.errors.constData());
    QVERIFY(!QFileInfo::exists(folder()));
}

void tst_ConvertCommand::settingsOfABuild()
{
    const QString config = m_folder->filePath("c.json");
    const Outcome built = runTessel({ "build", example("census.dcf"), example("census.dat"), "--to",
        m_folder->filePath("t.sqlite"), "--records", "PERSON", "--where", "PROVINCE=11",
        "--repeats", "tables", "--save-config", config });
    QVERIFY2(built.status == 0, built.errors.constData());
    const Outcome outcome = convert({}, { "--config", config, "--to", "stata" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QCOMPARE(leftBehind(), (QStringList { "LANGUAGE.dta", "PERSON.dta" }));
    const StatContents found = StatContents::read(folder() + "/PERSON.dta");
    QVERIFY(!found.rows.isEmpty());
    for (const QStringList& row : found.rows)
        QCOMPARE(row.first(), QString("11"));
    const Outcome columns =
        convert({}, { "--config", config, "--to", "stata", "--repeats", "columns", "--overwrite" });
    QVERIFY2(columns.status == 0, columns.errors.constData());
    QVERIFY(StatContents::read(folder() + "/PERSON.dta").column("LANGUAGE_1") >= 0);
    QCOMPARE(convert({}, { "--config", m_folder->filePath("none"), "--to", "stata" }).status, 1);
}

// Saved with all choices and taken up again by a run that says no more than where.
void tst_ConvertCommand::savedSettings()
{
    const QString config = m_folder->filePath("c.json");
    const QStringList census { example("census.dcf"), example("census.dat") };
    const Outcome saved = convert(census,
        { "--to", "csv", "--labels", "--merge", "--spreadsheet", "--repeats", "tables", "--records",
            "PERSON,HOUSEHOLD", "--where", "PROVINCE=11", "--save-config", config });
    QVERIFY2(saved.status == 0, saved.errors.constData());
    const QByteArray made = readFile(folder() + "/PERSON.csv");
    QVERIFY(made.startsWith("\xEF\xBB\xBF") && made.contains("Alta R"));
    const QStringList files = leftBehind();
    QVERIFY(files.contains("LANGUAGE.csv"));
    QVERIFY(QDir(folder()).removeRecursively());
    const Outcome again = runTessel({ "convert", "--config", config });
    QVERIFY2(again.status == 0, again.errors.constData());
    QCOMPARE(leftBehind(), files);
    QCOMPARE(readFile(folder() + "/PERSON.csv"), made);
    const QString other = m_folder->filePath("other");
    const Outcome stata = runTessel({ "convert", "--config", config, "--to", "stata", "-o", other,
        "--missing", "code", "--save-config", m_folder->filePath("d.json") });
    QVERIFY2(stata.status == 0, stata.errors.constData());
    QVERIFY(QFile::exists(other + "/LANGUAGE.dta"));
    const Outcome code = runTessel({ "convert", "--config", m_folder->filePath("d.json"), "-o",
        m_folder->filePath("third"), "--plan" });
    QVERIFY2(!code.output.contains(" is .a"), code.output.constData());
    const Outcome built =
        runTessel({ "build", "--config", config, "--to", m_folder->filePath("t.sqlite") });
    QVERIFY2(built.status == 0, built.errors.constData());
}

void tst_ConvertCommand::savedSettingsAreSpared()
{
    const QStringList sav { example("household.sav") };
    Outcome outcome =
        convert(sav, { "--to", "csv", "--save-config", folder() + "/datapackage.json" });
    QCOMPARE(outcome.status, 1);
    outcome = convert(sav, { "--to", "csv", "--save-config", sav.first() });
    QCOMPARE(outcome.status, 2);
    outcome = convert(sav, { "--to", "csv", "--save-config", "" });
    QVERIFY2(outcome.errors.contains("--save-config needs the name of a file"),
        outcome.errors.constData());
    QCOMPARE(runTessel({ "convert", sav.first(), "--to", "csv" }).status, 2);
}

void tst_ConvertCommand::planMakesNothing()
{
    const Outcome outcome =
        convert({ example("census.dcf"), example("census.dat") }, { "--to", "stata", "--plan" });
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("file PERSON.dta"));
    QVERIFY(outcome.output.contains("changed: HOUSEHOLD.dta WATER_SOURCE"));
    QVERIFY(!QFileInfo::exists(folder()));
}

void tst_ConvertCommand::strict()
{
    const QStringList census { example("census.dcf"), example("census.dat") };
    const Outcome refused = convert(census, { "--to", "stata", "--strict" });
    QCOMPARE(refused.status, 1);
    QVERIFY(!QFileInfo::exists(folder()));
    const Outcome taken = convert({ example("household.sav") }, { "--to", "spss", "--strict" });
    QVERIFY2(taken.status == 0, taken.errors.constData());
}

QTEST_GUILESS_MAIN(tst_ConvertCommand)
#include "tst_ConvertCommand.moc"
