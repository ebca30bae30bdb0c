// Loads real data into the tables that "tessel export --to sql" makes: every row of every
// dictionary of the corpus that has a data file beside it. The lines are cut here, by the listed
// columns.
#include "PostgreSqlServer.h"
#include "RunTessel.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTextCodec>
#include <QtTest>

namespace {

struct Column {
    QString name; // as SQL has it
    int start = 0; // from 0
    int length = 0;
};

struct Table {
    QString name;
    QVector<Column> columns;
    QVector<QStringList> rows; // null: no value
};

QString decoded(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 ? text
                                   : QTextCodec::codecForName("windows-1252")->toUnicode(bytes);
}

QStringList linesOf(const QString& path)
{
    QStringList lines = decoded(readFile(path)).remove('\r').split('\n');
    if (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines;
}

QString unquoted(QString name)
{
    return name.startsWith('"') ? name.mid(1, name.size() - 2).replace("\"\"", "\"") : name;
}

// The names of a table's columns, in their order.
QStringList columnNames(const QString& sql, const QString& table)
{
    const int start = sql.indexOf("\nCREATE TABLE " + table + " (\n");
    const QString definition = sql.mid(start, sql.indexOf("\n);\n", start) - start);
    QStringList names;
    QRegularExpression expression(
        "^  (\"[^\"]+\"|\\w+) [A-Z]", QRegularExpression::MultilineOption);
    auto match = expression.globalMatch(definition);
    while (match.hasNext())
        names.append(match.next().captured(1));
    return start < 0 ? QStringList() : names;
}

// A dictionary, its data, and the statements that make its tables.
class Census {
public:
    Census(const QString& dictionary, const QString& data, const QString& dialect)
    {
        const Outcome made =
            runTessel({ "export", dictionary, "--to", "sql", "--dialect", dialect });
        m_sql = made.output;
        const QByteArray json = runTessel({ "fields", "-f", "json", dictionary }).output;
        m_listing =
            QJsonDocument::fromJson(json).object().value("files").toArray().at(0).toObject();
        for (const QJsonValue& record : m_listing.value("records").toArray())
            addTable(record.toObject());
        cut(linesOf(data));
    }

    const QVector<Table>& tables() const
    {
        return m_tables;
    }

    int lostLines() const
    {
        return m_lostLines;
    }

    // Makes the tables and loads all rows.
    QByteArray statements() const
    {
        QString text;
        for (const Table& table : m_tables) {
            constexpr int RowsAtOnce = 500;
            for (int i = 0; i < table.rows.size(); ++i) {
                text += i % RowsAtOnce == 0
                    ? QStringLiteral(";\nINSERT INTO %1 VALUES\n").arg(table.name)
                    : QStringLiteral(",\n");
                text += valuesOf(table.rows.at(i));
            }
        }
        return m_sql + "BEGIN" + text.toUtf8() + ";\nCOMMIT;\n";
    }

    // Asks for the rows of each table and for the values in each of its columns.
    QByteArray counts() const
    {
        QStringList queries;
        for (const Table& table : m_tables) {
            QStringList columns { "count(*)" };
            for (const Column& column : table.columns)
                columns.append(QStringLiteral("count(%1)").arg(column.name));
            queries.append(QStringLiteral("SELECT %1 FROM %2;\n")
                               .arg(columns.join(" || ' ' || "), table.name));
        }
        return queries.join(QString()).toUtf8();
    }

    // What the answer is to be.
    QByteArray expectedCounts() const
    {
        QStringList lines;
        for (const Table& table : m_tables) {
            QStringList counts { QString::number(table.rows.size()) };
            for (int i = 0; i < table.columns.size(); ++i) {
                counts.append(QString::number(std::count_if(table.rows.cbegin(), table.rows.cend(),
                    [i](const QStringList& row) { return !row.at(i).isNull(); })));
            }
            lines.append(counts.join(' ') + '\n');
        }
        return lines.join(QString()).toUtf8();
    }

private:
    static QString valuesOf(const QStringList& row)
    {
        QStringList values;
        for (QString value : row)
            values.append(value.isNull() ? "NULL" : '\'' + value.replace('\'', "''") + '\'');
        return '(' + values.join(", ") + ')';
    }

    QJsonObject fieldOf(const QString& name, const QString& record) const
    {
        for (const QJsonValue& value : m_listing.value("fields").toArray()) {
            const QJsonObject field = value.toObject();
            const bool isHere = field.value("record").isNull() || field.value("record") == record;
            if (isHere && field.value("name") == name)
                return field;
        }
        return {};
    }

    void addTable(const QJsonObject& record)
    {
        Table table;
        table.name = record.value("name").toString();
        for (const QString& name : columnNames(QString::fromUtf8(m_sql), table.name)) {
            const QJsonObject field = fieldOf(unquoted(name), table.name);
            const int length = field.value("length").toInt();
            table.columns.append({ name, field.value("start").toInt() - 1, length });
            m_decimals.insert(table.name + '.' + name,
                field.value("decimalChar").toBool() ? 0 : field.value("decimals").toInt());
            m_texts.insert(table.name + '.' + name, field.value("type") == QLatin1String("string"));
        }
        m_indexes.insert(record.value("recordType").toString(), m_tables.size());
        m_tables.append(table);
    }

    void cut(const QStringList& lines)
    {
        const int start = m_listing.value("recordTypeStart").toInt() - 1;
        const int length = m_listing.value("recordTypeLength").toInt();
        for (const QString& line : lines) {
            const int index = length > 0 ? m_indexes.value(line.mid(start, length), -1) : 0;
            if (index < 0)
                ++m_lostLines;
            else
                m_tables[index].rows.append(valuesIn(line, m_tables.at(index)));
        }
    }

    QStringList valuesIn(const QString& line, const Table& table) const
    {
        QStringList row;
        for (const Column& column : table.columns) {
            const QString key = table.name + '.' + column.name;
            QString value = line.mid(column.start, column.length);
            while (value.endsWith(' '))
                value.chop(1);
            if (!m_texts.value(key))
                value = number(value.trimmed(), m_decimals.value(key));
            row.append(value.isEmpty() ? QString() : value);
        }
        return row;
    }

    // Asterisks stand for no number.
    static QString number(const QString& digits, int decimals)
    {
        if (digits.startsWith('*'))
            return QString();
        if (decimals == 0 || digits.isEmpty() || digits.contains('.'))
            return digits;
        const QString padded = digits.rightJustified(decimals + 1, '0');
        return padded.left(padded.size() - decimals) + '.' + padded.right(decimals);
    }

    QByteArray m_sql;
    QJsonObject m_listing;
    QVector<Table> m_tables;
    QHash<QString, int> m_indexes; // of the tables, by record type
    QHash<QString, int> m_decimals; // without a point in the data
    QHash<QString, bool> m_texts;
    int m_lostLines = 0;
};

} // namespace

class tst_SqlLoad : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void sqlite_data();
    void sqlite();
    void postgresql();
    void codesOutsideTheirSets();
    void pointAnywhere();

private:
    QStringList dictionaries() const;

    QString m_sqlite = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
    QString m_corpus = qEnvironmentVariable("TESSEL_CORPUS");
};

void tst_SqlLoad::initTestCase()
{
    QCOMPARE(columnNames("\nCREATE TABLE T (\n  A INTEGER,\n  \"B C\" TEXT\n);\n", "T"),
        QStringList({ "A", "\"B C\"" }));
}

// The example, and those of the corpus that have data.
QStringList tst_SqlLoad::dictionaries() const
{
    QStringList paths { TESSEL_EXAMPLES "/census.dcf" };
    for (const char* folder : { "cspro", "cspro-json" }) {
        const QDir files(QDir(m_corpus).filePath(folder));
        for (const QString& name : files.entryList({ "*.dat" }, QDir::Files)) {
            if (!m_corpus.isEmpty())
                paths.append(files.filePath(QFileInfo(name).completeBaseName() + ".dcf"));
        }
    }
    return paths;
}

QString dataOf(const QString& dictionary)
{
    return dictionary.chopped(4) + ".dat";
}

void tst_SqlLoad::sqlite_data()
{
    QTest::addColumn<QString>("dictionary");
    for (const QString& path : dictionaries())
        QTest::newRow(qPrintable(QFileInfo(path).completeBaseName())) << path;
}

void tst_SqlLoad::sqlite()
{
    QFETCH(QString, dictionary);
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const Census census(dictionary, dataOf(dictionary), "sqlite");
    QCOMPARE(census.lostLines(), 0);
    const Outcome loaded = runProgram(m_sqlite, { "-batch", ":memory:" },
        "PRAGMA foreign_keys = ON;\n" + census.statements() + census.counts()
            + "PRAGMA foreign_key_check;\n");
    QCOMPARE(loaded.errors, QByteArray());
    QCOMPARE(loaded.output, census.expectedCounts());
    QVERIFY(loaded.output.size() > 1);
}

void tst_SqlLoad::postgresql()
{
    PostgreSqlServer server;
    const QString missing = server.start();
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    for (const QString& path : dictionaries()) {
        const Census census(path, dataOf(path), "postgresql");
        const Outcome loaded = server.carryOut(census.statements() + census.counts());
        QVERIFY2(loaded.status == 0, qPrintable(path + ": " + loaded.errors));
        QCOMPARE(loaded.output, census.expectedCounts());
    }
    // Labels of any length and characters stand in the tables, long codes without an index.
    QTemporaryDir folder;
    const QString path = folder.filePath("long.dcf");
    const QByteArray code = QString(600, QChar(0x4E00)).toUtf8();
    QVERIFY(writeFile(path,
        "[Dictionary]\nName=LONG\n[Record]\nName=R\n[Item]\nName=WORD\nStart=1\nLen=999\n"
        "DataType=Alpha\n[ValueSet]\nName=WORDS\nValue='"
            + code + "';Held\nValue='" + code + "x';Too long\n"));
    const QByteArray sql =
        runTessel({ "export", path, "--to", "sql", "--dialect", "postgresql" }).output;
    const Outcome loaded = server.carryOut(
        sql + "SELECT label, length(code), length(written) FROM WORDS ORDER BY label;");
    QVERIFY2(loaded.status == 0, loaded.errors.constData());
    QCOMPARE(loaded.output, QByteArray("Held|600|600\nToo long||601\n"));
}

void tst_SqlLoad::codesOutsideTheirSets()
{
    if (m_corpus.isEmpty())
        QSKIP("TESSEL_CORPUS names no folder with real dictionaries and data");
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const QString path = QDir(m_corpus).filePath("cspro-json/popstan-census-full.dcf");
    const Census census(path, dataOf(path), "sqlite");
    const Outcome loaded = runProgram(m_sqlite, { "-batch", ":memory:" },
        "PRAGMA foreign_keys = ON;\n" + census.statements()
            + "SELECT count(*) FROM PERSON;\nSELECT count(*) FROM HOUSING;\n"
              "SELECT count(P16_IND) FROM PERSON WHERE P16_IND NOT IN "
              "(SELECT code FROM P16_IND_VS1 WHERE code IS NOT NULL);\n");
    QCOMPARE(loaded.errors, QByteArray());
    QCOMPARE(loaded.output, QByteArray("24271\n4872\n8313\n"));
}

// Data with a decimal point may have more digits before or behind it than the dictionary tells.
void tst_SqlLoad::pointAnywhere()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("point.dcf");
    const QByteArray dictionary = "[Dictionary]\nName=POINT\nDecimalChar=Yes\n[Record]\nName=R\n"
                                  "[Item]\nName=SHARE\nStart=1\nLen=6\nDecimal=4\nDecimalChar=Yes\n"
                                  "[Item]\nName=WEIGHT\nStart=7\nLen=6\nDecimal=4\n";
    QVERIFY(writeFile(path, dictionary));
    const QByteArray sql =
        runTessel({ "export", path, "--to", "sql", "--dialect", "postgresql" }).output;
    QVERIFY(sql.contains("\n  SHARE NUMERIC, -- "));
    QVERIFY(sql.contains("\n  WEIGHT NUMERIC(6, 4) -- "));
}

QTEST_GUILESS_MAIN(tst_SqlLoad)
#include "tst_SqlLoad.moc"
