#include <tessel_data/CaseIndex_p.h>

#include <QMap>
#include <QtTest>

#include <random>

using tessel::CaseIndex;

class TestDataCaseIndex : public QObject {
    Q_OBJECT

private slots:
    void repeated_data();
    void repeated();
    void longKeys();
    void longerThanExpected_data();
    void longerThanExpected();
    void stopped();
};

void TestDataCaseIndex::repeated_data()
{
    QTest::addColumn<int>("memory");
    QTest::addColumn<bool>("isSorted");
    QTest::newRow("in memory") << 1 << false;
    QTest::newRow("in memory, sorted") << 1 << true;
    QTest::newRow("in a file") << 0 << false;
    QTest::newRow("in a file, sorted") << 0 << true;
}

// Against a map of all keys.
void TestDataCaseIndex::repeated()
{
    QFETCH(int, memory);
    QFETCH(bool, isSorted);
    std::mt19937 random(3);
    std::vector<std::string> keys;
    for (int i = 0; i < 20'000; ++i)
        keys.push_back(std::to_string(random() % 30'000));
    if (isSorted)
        std::sort(keys.begin(), keys.end());
    CaseIndex index(5, memory != 0 ? 16'000'000 : 20'000);
    QMap<QString, QVector<qint64>> lines;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        index.add(keys[i], { qint64(i) + 1, qint64(i), 1, 0 });
        lines[QString::fromStdString(keys[i])].append(qint64(i) + 1);
    }
    QStringList expected;
    for (auto entry = lines.cbegin(); entry != lines.cend(); ++entry) {
        for (int i = 1; i < entry->size(); ++i)
            expected.append(
                QStringLiteral("%1 %2 %3").arg(entry.key()).arg(entry->first()).arg(entry->at(i)));
    }
    QStringList found;
    index.finish([&](const CaseIndex::Group& group) {
        found.append(QStringLiteral("%1 %2 %3")
                         .arg(QString::fromUtf8(group.key.data(), int(group.key.size())))
                         .arg(group.first.line)
                         .arg(group.second.line));
    });
    QVERIFY(expected.size() > 1000);
    QCOMPARE(found, expected);
}

// Keys that differ at their very end only.
void TestDataCaseIndex::longKeys()
{
    CaseIndex index(5000);
    const std::string key(4000, 'k');
    index.add(key + "1", { 1, 0, 0, 0 });
    index.add(key + "2", { 2, 1, 0, 0 });
    index.add(key + "1", { 3, 2, 0, 0 });
    QVector<qint64> lines;
    index.finish([&](const CaseIndex::Group& group) {
        lines += { group.first.line, group.second.line };
        QVERIFY(group.key.substr(0, 50) == key.substr(0, 50));
    });
    QCOMPARE(lines, (QVector<qint64> { 1, 3 }));
}

void TestDataCaseIndex::longerThanExpected_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("plain") << QByteArray("case-") + QByteArray(60, 'x');
    QTest::newRow("two bytes in a character") << QByteArray("é").repeated(40);
    QTest::newRow("three bytes") << QByteArray("k€").repeated(30);
    QTest::newRow("with a null") << QByteArray("a\0b", 3) + QByteArray(60, 'y');
}

// Keys that do not fit the size that was said: not one takes another for itself, and what is told
// of a key is the begin of it.
void TestDataCaseIndex::longerThanExpected()
{
    QFETCH(QByteArray, key);
    CaseIndex index(4, 100'000);
    constexpr int count = 70'000; // more than two bytes of a digest tell apart
    for (int i = 0; i < count; ++i) {
        const QByteArray longKey = key + QByteArray::number(i);
        index.add({ longKey.constData(), std::size_t(longKey.size()) }, { i + 1, i, 0, 0 });
    }
    index.add({ key.constData(), 3 }, { count + 1, count, 0, 0 });
    const QByteArray again = key + "77";
    index.add({ again.constData(), std::size_t(again.size()) }, { count + 2, count + 1, 0, 0 });
    QVector<qint64> lines;
    QByteArray told;
    index.finish([&](const CaseIndex::Group& group) {
        lines += { group.first.line, group.second.line };
        told = QByteArray(group.key.data(), int(group.key.size()));
    });
    QCOMPARE(lines, (QVector<qint64> { 78, count + 2 }));
    QVERIFY2(told.size() >= 16, told.toHex().constData());
    QVERIFY2(key.startsWith(told), told.toHex().constData());
    QVERIFY(!QString::fromUtf8(told).contains(QChar::ReplacementCharacter));
}

void TestDataCaseIndex::stopped()
{
    for (const int mostAsked : { 0, 1, 100 }) {
        CaseIndex index(5, 20'000);
        for (int i = 0; i < 20'000; ++i)
            index.add(std::to_string(i % 10'000), { i + 1, i, 0, 0 });
        int asked = 0;
        int found = 0;
        const bool isWhole = index.finish(
            [&](const CaseIndex::Group&) { ++found; }, [&] { return ++asked <= mostAsked; });
        QCOMPARE(isWhole, mostAsked == 100);
        QCOMPARE(found == 10'000, isWhole);
    }
}

QTEST_GUILESS_MAIN(TestDataCaseIndex)
#include "tst_DataCaseIndex.moc"
