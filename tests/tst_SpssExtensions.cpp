#include <model_Tessel/StatDictionary.h>

#include "StatFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// What an SPSS file says besides its variables: weight, multiple response sets, attributes, roles.
class TestSpssExtensions : public QObject {
    Q_OBJECT

private slots:
    void init();

    void weight();
    void extensions();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }
    TStatFileDescription written(const StatFileWriter& writer) const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSpssExtensions::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

TStatFileDescription TestSpssExtensions::written(const StatFileWriter& writer) const
{
    const QString file = path(QStringLiteral("written"));
    return writer.write(file, TStatFileKind::Spss, 1)
        ? readStatDescription(file, TStatFileKind::Spss)
        : TStatFileDescription();
}

void TestSpssExtensions::weight()
{
    StatFileWriter writer;
    writer.add("NAME", READSTAT_TYPE_STRING, "A300", nullptr, 300); // several places of a row
    writer.add("W", READSTAT_TYPE_DOUBLE, "F8.2");
    QCOMPARE(written(writer).weight, -1);
    StatFileWriter weighted;
    weighted.add("NAME", READSTAT_TYPE_STRING, "A300", nullptr, 300);
    const readstat_variable_t* weight = weighted.add("W", READSTAT_TYPE_DOUBLE, "F8.2");
    weighted.add("X", READSTAT_TYPE_DOUBLE, "F8.2");
    readstat_writer_set_fweight_variable(weighted.get(), weight);
    const TStatFileDescription description = written(weighted);
    QCOMPARE(description.weight, 1);
    QCOMPARE(description.variables.at(description.weight).name, QStringLiteral("W"));
}

// Records that libreadstat passes over; names of variables in any case, values with all signs.
void TestSpssExtensions::extensions()
{
    StatFileWriter writer;
    writer.add("first", READSTAT_TYPE_DOUBLE, "F8.2");
    writer.add("Second", READSTAT_TYPE_DOUBLE, "F8.2");
    const QString name = path(QStringLiteral("written"));
    QVERIFY(writer.write(name, TStatFileKind::Spss, 1));
    const auto described = [&](const QByteArray& bytes) {
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return TStatFileDescription();
        file.close();
        return readStatDescription(name, TStatFileKind::Spss);
    };
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray plain = file.readAll();
    file.close();
    const TStatFileDescription none = described(plain);
    QVERIFY(none.attributes.isEmpty() && none.responseSets.isEmpty());
    QVERIFY(none.variableSets.isEmpty());
    QVERIFY(none.variables.at(0).role.isEmpty() && none.variables.at(0).attributes.isEmpty());

    QByteArray bytes = withSpssRecord(plain, 7, "$a=C 5 A set first Second\n");
    bytes = withSpssRecord(bytes, 17, u8"ver('2'\n)se\u00f1al[1]('it's (so)/:'\n'b'\n)");
    bytes = withSpssRecord(
        bytes, 18, "FIRST:$@Role('0'\n)src('survey'\n)/second:$@Role('2'\n)/gone:x('1'\n)");
    bytes = withSpssRecord(bytes, 19, "$a=C 5 A set first Second\n$b=E 1 1 1 5 A set first\n");
    bytes = withSpssRecord(bytes, 5, u8"se\u00f1al one= first Second\nnone= \n");
    const TStatFileDescription found = described(bytes);
    QVERIFY(found.isWhole());
    QCOMPARE(found.rowCount, qint64(1));
    QCOMPARE(found.responseSets, QStringList({ QStringLiteral("$a"), QStringLiteral("$b") }));
    QCOMPARE(found.variableSets,
        QStringList({ QString::fromUtf8(u8"se\u00f1al one"), QString("none") }));
    QCOMPARE(found.attributes,
        QStringList({ QStringLiteral("ver"), QString::fromUtf8(u8"se\u00f1al[1]") }));
    QCOMPARE(found.variables.at(0).attributes, QStringList(QStringLiteral("src")));
    QCOMPARE(found.variables.at(0).role, QString());
    QCOMPARE(found.variables.at(1).role, QStringLiteral("2"));

    for (const QByteArray& damaged :
        { QByteArray("a"), QByteArray("a("), QByteArray("a('"), QByteArray("a('x'\n"),
            QByteArray("a('x'\n)b('"), QByteArray("/"), QByteArray(":"), QByteArray("/:(") }) {
        for (const int kind : { 5, 7, 17, 18, 19 })
            QVERIFY(described(withSpssRecord(plain, kind, damaged)).attributes.size() <= 1);
    }
}

QTEST_GUILESS_MAIN(TestSpssExtensions)
#include "tst_SpssExtensions.moc"
