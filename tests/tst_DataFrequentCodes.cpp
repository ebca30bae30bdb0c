// The most frequent of many codes, compared with counting each of them.
#include <tessel_data/FrequentCodes_p.h>

#include <QtTest>

#include <map>
#include <random>

using tessel::FrequentCodes;

class tst_DataFrequentCodes : public QObject {
    Q_OBJECT

private slots:
    void allAreExact();
    void generated();
    void roomIsKept();
};

void tst_DataFrequentCodes::allAreExact()
{
    FrequentCodes<std::string> codes;
    std::size_t room = 100'000;
    for (const char* code : { "a", "b", "b", "c", "b", "c" })
        codes.add(code, 1, 10, room);
    QVERIFY(codes.hasAll());
    QCOMPARE(codes.counts().size(), std::size_t(3));
    QCOMPARE(codes.counts()[0].code(), std::string("b"));
    QCOMPARE(codes.counts()[0].count, 3LL);
    QCOMPARE(codes.counts()[1].code(), std::string("c"));
    QCOMPARE(codes.counts()[2].count, 1LL);
    QCOMPARE(codes.counts()[2].taken, 0LL);
}

// Each count is a bound of the true one, and no code more frequent than the lowest is missing.
void tst_DataFrequentCodes::generated()
{
    std::mt19937 random(5);
    for (const int limit : { 8, 20, 100 }) {
        FrequentCodes<qint64> codes;
        std::map<qint64, qint64> all;
        std::size_t room = 1'000'000;
        for (int i = 0; i < 20'000; ++i) {
            const qint64 code = random() % 3 == 0 ? random() % 5 : random() % 3000;
            codes.add(code, 0, std::size_t(limit), room);
            ++all[code];
        }
        QVERIFY(!codes.hasAll());
        QCOMPARE(codes.counts().size(), std::size_t(limit));
        qint64 before = std::numeric_limits<qint64>::max();
        qint64 sum = 0;
        std::map<qint64, qint64> unfound = all;
        for (const auto& one : codes.counts()) {
            const qint64 exact = all[one.code()];
            QVERIFY(one.count >= exact && one.count - one.taken <= exact);
            QVERIFY(one.count <= before);
            before = one.count;
            sum += one.count;
            QCOMPARE(unfound.erase(one.code()), std::size_t(1));
        }
        QCOMPARE(sum, 20'000LL);
        for (const auto& [code, count] : unfound)
            QVERIFY(count <= codes.counts().back().count);
    }
}

void tst_DataFrequentCodes::roomIsKept()
{
    std::size_t room = 10'000;
    std::vector<FrequentCodes<std::string>> columns(40);
    for (int i = 0; i < 500; ++i) {
        for (auto& codes : columns)
            codes.add(std::string(std::size_t(i % 100), 'x') + std::to_string(i), 103, 1000, room);
    }
    QVERIFY(room < 300);
    std::size_t kept = 0;
    for (const auto& codes : columns) {
        QVERIFY(codes.counts().size() >= 8);
        QVERIFY(!codes.hasAll());
        kept += codes.counts().size();
    }
    QVERIFY2(kept <= 40 * 8 + 100, qPrintable(QString::number(kept)));
}

QTEST_GUILESS_MAIN(tst_DataFrequentCodes)
#include "tst_DataFrequentCodes.moc"
