// How files of SPSS and Stata are made of rows that wait: when it is asked whether to go on, and
// how much of long texts may wait in memory.
#include <tessel_data/CSProTextSource.h>
#include <tessel_data/Converter.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatTarget.h>

#include <QtTest>

using namespace tessel;

class tst_StatTarget : public QObject {
    Q_OBJECT

private slots:
    void init();
    void asksByCells_data();
    void asksByCells();
    void asksWithLongTexts();
    void longTextBound();
    void widenedByCharacters();
    void byteWidths();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    bool write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
    // Makes files of the data, and of the answers to whether to go on.
    bool convert(const QByteArray& dictionary, const QByteArray& data, ConversionFormat format,
        const std::function<bool()>& goesOn, qint64 bound = -1);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::vector<std::vector<ConversionCounts>> m_counts;
};

namespace {

QByteArray survey(const QByteArray& items)
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n"
           "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\nName=Q\n\n"
           "[IdItems]\n\n[Item]\nLabel=I\nName=I\nStart=1\nLen=3\nDataType=Numeric\n\n[Record]\n"
           "Label=R\nName=R\nRecordLen=40000\n"
        + items;
}

QByteArray item(const QByteArray& name, int start, int width, const QByteArray& type)
{
    return "\n[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(width) + "\nDataType=" + type + "\n";
}

QByteArray rows(int count, const QByteArray& values)
{
    QByteArray lines;
    for (int row = 0; row < count; ++row)
        lines += QByteArray::number(100 + row) + values + '\n';
    return lines;
}

} // namespace

void tst_StatTarget::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

bool tst_StatTarget::convert(const QByteArray& dictionary, const QByteArray& data,
    ConversionFormat format, const std::function<bool()>& goesOn, qint64 bound)
{
    if (!write("d.dat", data))
        return false;
    CSProTextSource source(DataDictionary::fromBytes(dictionary, "d.dcf"), { path("d.dat") });
    ConversionOptions options;
    options.format = format;
    const ConversionPlan plan(source.dictionary(), options);
    StatTarget target(path("out"), format, true);
    if (bound >= 0)
        target.setLongTextBound(bound);
    Converter converter(source, target, plan);
    if (!runPipeline(source, converter, {}))
        return false;
    const bool isMade = target.finish(goesOn);
    m_counts = target.counts();
    return isMade;
}

void tst_StatTarget::asksByCells_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("spss") << int(ConversionFormat::Spss);
    QTest::newRow("stata") << int(ConversionFormat::Stata);
}

// 600 rows of 4,001 variables are 2.4 million cells.
void tst_StatTarget::asksByCells()
{
    QFETCH(int, format);
    QByteArray items;
    for (int i = 0; i < 4000; ++i)
        items += item("N" + QByteArray::number(i), 4 + i, 1, "Numeric");
    const QByteArray data = rows(600, QByteArray("1").repeated(4000));
    int asked = 0;
    QVERIFY(convert(survey(items), data, ConversionFormat(format), [&] { return ++asked > 0; }));
    QVERIFY2(asked >= 8, qPrintable(QString::number(asked)));
    QVERIFY(QDir(path("out")).removeRecursively());
    asked = 0;
    QVERIFY(!convert(survey(items), data, ConversionFormat(format), [&] { return ++asked < 5; }));
    QCOMPARE(asked, 5);
    QVERIFY(!QFileInfo::exists(path("out")));
}

// Once before they are handed over and once before the rows.
void tst_StatTarget::asksWithLongTexts()
{
    const QByteArray dictionary = survey(item("T", 4, 3000, "Alpha"));
    const QByteArray data = rows(10, QByteArray("x").repeated(2100));
    int asked = 0;
    QVERIFY(convert(dictionary, data, ConversionFormat::Stata, [&] { return ++asked > 0; }));
    QCOMPARE(asked, 2);
    QVERIFY(QDir(path("out")).removeRecursively());
    QVERIFY(!convert(dictionary, data, ConversionFormat::Stata, [] { return false; }));
    QVERIFY(!QFileInfo::exists(path("out")));
}

void tst_StatTarget::longTextBound()
{
    const QByteArray dictionary =
        survey(item("T", 4, 3000, "Alpha") + item("SHORT", 3004, 5, "Alpha"));
    const QByteArray data = rows(10, QByteArray("x").repeated(3000) + "short");
    const auto always = [] { return true; };
    try {
        convert(dictionary, data, ConversionFormat::Stata, always, 29'999);
        QFAIL("more than may wait");
    } catch (const DataError& error) {
        QCOMPARE(int(error.code), int(DataError::Code::UnfitSelection));
        QVERIFY2(error.file.endsWith("R.dta"), qPrintable(error.file));
    }
    QVERIFY(!QFileInfo::exists(path("out")));
    QVERIFY(convert(dictionary, data, ConversionFormat::Spss, always, 29'999)); // has no such
    QVERIFY(convert(dictionary, data, ConversionFormat::Stata, always, 30'000));
}

// An item of two characters takes them, however many bytes they have.
void tst_StatTarget::widenedByCharacters()
{
    const QByteArray dictionary = survey(item("T", 4, 2, "Alpha"));
    const auto always = [] { return true; };
    for (const ConversionFormat format : { ConversionFormat::Spss, ConversionFormat::Stata }) {
        QVERIFY(convert(dictionary, rows(2, u8"\u00e9\u20ac"), format, always));
        QVERIFY(!m_counts.at(0).at(1).isWidened);
    }
}

// One byte that is no plain ASCII is found wherever it stands, in data that are read in halves and
// in pieces.
void tst_StatTarget::byteWidths()
{
    constexpr int size = 300'000;
    const DataDictionary dictionary =
        DataDictionary::fromBytes(survey(item("A", 4, 1, "Alpha")), "d.dcf");
    const auto isPlain = [&](const QByteArray& data) {
        return write("d.dat", data)
            && hasByteWidths(CSProTextSource(dictionary, { path("d.dat") }));
    };
    QVERIFY(isPlain(QByteArray()));
    QVERIFY(isPlain("\x01 ~\x7F"));
    const QByteArray plain(size, 'a');
    QVERIFY(isPlain(plain));
    for (const int place : { 0, 1, 65535, 65536, size / 2 - 1, size / 2, size - 1 }) {
        for (const char byte : { '\0', '\x80', '\xFF' }) {
            QByteArray data = plain;
            data[place] = byte;
            QVERIFY2(!isPlain(data), qPrintable(QString::number(place)));
        }
    }
}

QTEST_GUILESS_MAIN(tst_StatTarget)
#include "tst_StatTarget.moc"
