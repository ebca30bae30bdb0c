#include "DescribedDictionary.h"
#include "GeneratedDictionary.h"
#include "PlainCSProReader.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QMessageBox>
#include <QtTest>

#include <algorithm>

class tst_CSProTwoReaders : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void bothReadersAgree_data();
    void bothReadersAgree();
};

void tst_CSProTwoReaders::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProTwoReaders::bothReadersAgree_data()
{
    QTest::addColumn<quint32>("firstSeed");
    for (quint32 block = 0; block < 10; ++block)
        QTest::addRow("dictionaries %u to %u", block * 400, block * 400 + 399) << block * 400;
}

void tst_CSProTwoReaders::bothReadersAgree()
{
    QFETCH(quint32, firstSeed);
    const QList<int> buttons { QMessageBox::Yes, QMessageBox::No, QMessageBox::Yes,
        QMessageBox::YesToAll, QMessageBox::NoToAll };
    int valueSets = 0;
    int occurrences = 0;
    int decimals = 0;
    for (quint32 seed = firstSeed; seed < firstSeed + 400; ++seed) {
        const int firstButton = static_cast<int>(seed);
        QStringList lines = DictionaryWriter(seed).lines();

        TCSPro parser;
        int asked = firstButton;
        parser.setDecimalQuestion(
            [&](const CSProProblem&) { return buttons.at(asked++ % buttons.size()); });
        parser.loadFromStr(&lines);

        int askedPlainly = firstButton;
        plain::Reader reader([&] { return buttons.at(askedPlainly++ % buttons.size()); });
        reader.read(lines);

        const QStringList found = described(parser);
        const QStringList wanted = described(reader);
        for (int i = 0; i < std::max(found.size(), wanted.size()); ++i) {
            QVERIFY2(found.value(i) == wanted.value(i),
                qPrintable(QStringLiteral("seed %1\n%2\n%3\n%4")
                               .arg(seed)
                               .arg(found.value(i), wanted.value(i), lines.join('\n'))));
        }
        QCOMPARE(asked, askedPlainly);
        decimals += asked - firstButton;
        for (const TCSProItem* item : qAsConst(*parser.items)) {
            valueSets += item->getHasValueSet() ? 1 : 0;
            occurrences += item->occurrence > 1 ? 1 : 0;
        }
    }
    // The generated dictionaries hold what they are there for.
    QVERIFY2(valueSets > 100, qPrintable(QString::number(valueSets)));
    QVERIFY2(occurrences > 100, qPrintable(QString::number(occurrences)));
    QVERIFY2(decimals > 10, qPrintable(QString::number(decimals)));
}

QTEST_MAIN(tst_CSProTwoReaders)

#include "tst_CSProTwoReaders.moc"
