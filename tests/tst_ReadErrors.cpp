// Files that cannot be read to their end, and what is no file, in every command that reads them: an
// error that names the file, never a part of it taken for the whole.
#include "RunTessel.h"

#include <model_Tessel/Lookup.h>

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

// The program with reads of a file that fail, or end, behind some bytes.
Outcome runFailing(const QStringList& arguments, const QString& file, int after, bool ends)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", environment.value("LD_PRELOAD") + " " TESSEL_FAILING_READ);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    environment.insert("FAILING_READ_FILE", QFileInfo(file).canonicalFilePath());
    environment.insert("FAILING_READ_BYTES", QString::number(after));
    if (ends)
        environment.insert("FAILING_READ_ENDS", "1");
    return runTessel(arguments, QByteArray(), environment);
}

// Items enough for several reads.
QByteArray longDictionary()
{
    QByteArray text = "[Dictionary]\nLabel=Long\nName=LONG\n\n[Level]\nName=L\n\n[IdItems]\n\n"
                      "[Record]\nLabel=R\nName=R\nRecordTypeValue=''\n";
    for (int i = 0; i < 3000; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "\n[Item]\nLabel=Item " + number + "\nName=I" + number
            + "\nStart=" + QByteArray::number(i + 1) + "\nLen=1\n\n[ValueSet]\nName=I" + number
            + "_VS1\nValue=1;Yes\n";
    }
    return text;
}

QByteArray longLookup()
{
    QByteArray text;
    for (int i = 0; i < 200'000; ++i)
        text += QByteArray::number(100'000 + i) + ",Place " + QByteArray::number(i) + '\n';
    return text;
}

} // namespace

class tst_ReadErrors : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void reading_data();
    void reading();
    void noFile_data();
    void noFile();
    void importOfALookup_data();
    void importOfALookup();

private:
    QString pathOf(const QString& name) const
    {
        return m_folder.filePath(name);
    }

    // The commands that read each file.
    QMap<QString, QVector<QStringList>> commands() const;

    QTemporaryDir m_folder;
};

void tst_ReadErrors::initTestCase()
{
    QVERIFY(writeFile(pathOf("long.dcf"), longDictionary()));
    QVERIFY(writeFile(pathOf("long.txt"), longLookup()));
    QVERIFY(QFile::copy(TESSEL_TEST_DATA "/basic.csdb", pathOf("basic.csdb")));
}

QMap<QString, QVector<QStringList>> tst_ReadErrors::commands() const
{
    QMap<QString, QVector<QStringList>> result;
    for (const QString& name : { QString("long.dcf"), QString("basic.csdb") }) {
        const QString file = pathOf(name);
        const QString variable = name == "long.dcf" ? ":I7" : ":ROOMS";
        result[name] = { { "fields", file }, { "fields", "--rules", "established", file },
            { "tree", file }, { "export", "--to", "sql", file }, { "export", "--to", "ddi", file },
            { "export", "--to", "html", file }, { "diff", file, "basic.dcf" },
            { "diff", "basic.dcf", file },
            { "lookup", "--against", file + variable, "lookup_provinces.txt" } };
    }
    const QString lookup = pathOf("long.txt");
    result["long.txt"] = { { "lookup", lookup }, { "lookup", "--separator", "comma", lookup },
        { "lookup", "--encoding", "ISO-8859-1", lookup },
        { "tree", "--lookup", "CLUSTER=" + lookup, "basic.dcf" } };
    return result;
}

void tst_ReadErrors::reading_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("after");
    QTest::addColumn<bool>("ends");
    const auto all = commands();
    for (auto entry = all.begin(); entry != all.end(); ++entry) {
        const bool isDatabase = entry.key().endsWith(".csdb");
        for (const QStringList& arguments : entry.value()) {
            const QByteArray command = arguments.join(' ').remove(m_folder.path()).toUtf8();
            for (const int after : { 0, 50, isDatabase ? 1000 : 100'000 }) {
                for (const bool ends : { false, true }) {
                    QTest::addRow(
                        "%s, %s after %d", command.constData(), ends ? "end" : "fail", after)
                        << arguments << entry.key() << after << ends;
                }
            }
        }
    }
}

void tst_ReadErrors::reading()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, name);
    QFETCH(int, after);
    QFETCH(bool, ends);
    if (after == 0 && !ends)
        QVERIFY2(!runTessel(arguments).output.isEmpty(), "the whole file is read");
    const Outcome outcome = runFailing(arguments, pathOf(name), after, ends);
    QCOMPARE(outcome.status, arguments.first() == "diff" ? 2 : 1);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(
        outcome.errors.contains(pathOf(name).toUtf8() + ": error: "), outcome.errors.constData());
    if (!ends)
        QVERIFY2(outcome.errors.contains("cannot be read: "), outcome.errors.constData());
}

void tst_ReadErrors::noFile_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("name");
    const auto all = commands();
    for (auto entry = all.begin(); entry != all.end(); ++entry) {
        for (const QStringList& arguments : entry.value()) {
            for (const char* name : { "folder", "pipe", "nothing" }) {
                QStringList changed = arguments;
                for (QString& argument : changed)
                    argument.replace(pathOf(entry.key()), pathOf(name));
                QTest::addRow("%s", qPrintable(changed.join(' ').remove(m_folder.path())))
                    << changed << name;
            }
        }
    }
}

// A pipe that nobody writes would be waited for without end.
void tst_ReadErrors::noFile()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, name);
    QDir(m_folder.path()).mkdir("folder");
    ::mkfifo(QFile::encodeName(pathOf("pipe")).constData(), 0600);
    const Outcome outcome = runTessel(arguments);
    QCOMPARE(outcome.status, arguments.first() == "diff" ? 2 : 1);
    QCOMPARE(outcome.output, QByteArray());
    const QByteArray reason =
        name == "nothing" ? "no such file" : "is a directory, a pipe or a device";
    QVERIFY2(outcome.errors.contains(pathOf(name).toUtf8() + ": error: " + reason),
        outcome.errors.constData());
}

void tst_ReadErrors::importOfALookup_data()
{
    QTest::addColumn<int>("after");
    QTest::addColumn<bool>("fails");
    QTest::newRow("at once") << 0 << true;
    QTest::newRow("within") << 100'000 << true;
    QTest::newRow("behind the end") << 100'000'000 << false;
}

// The library's own import ends where reading does, and says so.
void tst_ReadErrors::importOfALookup()
{
    QFETCH(int, after);
    QFETCH(bool, fails);
    TOxLookup lookup;
    lookup.setFfileName(pathOf("long.txt"));
    lookup.setSeparator(2);
    std::map<QString, int*> frequencies;
    qputenv("FAILING_READ_FILE", QFile::encodeName(pathOf("long.txt")));
    qputenv("FAILING_READ_BYTES", QByteArray::number(after));
    const bool isDone = lookup.consistencyCheck(importOnly, frequencies, nullptr);
    qunsetenv("FAILING_READ_FILE");
    QCOMPARE(isDone, !fails);
    QCOMPARE(lookup.status, fails ? 1 : -1);
    QCOMPARE(lookup.errorText.isEmpty(), !fails);
    QVERIFY(!lookup.cancelled);
    const int lines = fails ? after / 18 : 200'000;
    QVERIFY(lookup.lineNumber <= 200'000);
    QVERIFY(after == 0 ? lookup.lineNumber == 0 : lookup.lineNumber >= lines);
    for (const auto& record : lookup.values)
        delete record.second;
}

QTEST_GUILESS_MAIN(tst_ReadErrors)
#include "tst_ReadErrors.moc"
