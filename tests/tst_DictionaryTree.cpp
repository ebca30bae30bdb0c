#include "reading/DictionaryTree.h"
#include "reading/InputDictionary.h"

#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QTemporaryDir>
#include <QtTest>

namespace {

// Items of one kind each, whose neighbours are of another; all but two have no value set.
const QByteArray dictionary =
    "[Dictionary]\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n[Level]\nName=L\n[IdItems]\n"
    "[Item]\nName=ID\nStart=2\nLen=2\n"
    "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\n"
    "[Item]\nName=WHOLE\nStart=4\nLen=2\n"
    "[Item]\nName=IMPLIED\nStart=6\nLen=4\nDecimal=2\n"
    "[Item]\nName=POINT\nStart=10\nLen=4\nDecimal=1\nDecimalChar=Yes\n"
    "[Item]\nName=TEXT\nStart=14\nLen=4\nDataType=Alpha\n"
    "[Item]\nName=CODES\nStart=18\nLen=1\nOccurrences=3\n[ValueSet]\nName=CODES_VS\nValue=1;One\n"
    "[Item]\nName=TIMES\nStart=21\nLen=4\nDecimal=1\nOccurrences=2\n"
    "[Item]\nName=LAST\nStart=29\nLen=1\n"
    "[Record]\nName=S\nRecordTypeValue='2'\nMaxRecords=1\n"
    "[Item]\nName=OTHER\nStart=4\nLen=1\n[ValueSet]\nName=OTHER_VS\nValue=1:5;Few\n";

QString textOf(const VariableFacts& facts)
{
    static const QStringList ranges { "untold", "length", "value set" };
    static const QStringList points { "untold", "implied", "in data" };
    return ranges.at(int(facts.rangeSource)) + ' ' + facts.rangeValueSet + ", "
        + points.at(int(facts.decimalPoint));
}

void addFacts(const TOxEntity& entity, const TreeFacts& facts, QStringList& texts)
{
    for (const TOxVariable* variable : qAsConst(*entity.getVariables()))
        texts.append(variable->getName() + ": " + textOf(facts.value(variable)));
    for (const TOxEntity* child : qAsConst(*entity.getChildren()))
        addFacts(*child, facts, texts);
}

} // namespace

class tst_DictionaryTree : public QObject {
    Q_OBJECT

private slots:
    void factsOfEachVariable();
    void noFactsByEstablishedRules();

private:
    QString newFile() const
    {
        QFile file(m_folder.filePath("tree.dcf"));
        const bool isWritten =
            file.open(QIODevice::WriteOnly) && file.write(dictionary) == dictionary.size();
        return isWritten ? file.fileName() : QString();
    }

    QTemporaryDir m_folder;
};

// What is known of an item is its own, also beside one with the same value sets: none.
void tst_DictionaryTree::factsOfEachVariable()
{
    TreeFacts facts;
    bool isPartial = true;
    const DictionaryPointer tree = readTree(newFile(), InputOptions(), {}, facts, isPartial);
    QVERIFY(tree);
    QVERIFY(!isPartial);
    QStringList texts;
    addFacts(*tree->getRoot(), facts, texts);
    const QStringList expected { "ID: length , untold", "WHOLE: length , untold",
        "IMPLIED: length , implied", "POINT: length , in data", "TEXT: untold , untold",
        "CODES_1: value set CODES_VS, untold", "CODES_2: value set CODES_VS, untold",
        "CODES_3: value set CODES_VS, untold", "TIMES_1: length , implied",
        "TIMES_2: length , implied", "LAST: length , untold", "OTHER: value set OTHER_VS, untold" };
    QCOMPARE(texts, expected);
    QCOMPARE(facts.size(), expected.size());
}

void tst_DictionaryTree::noFactsByEstablishedRules()
{
    InputOptions options;
    options.dictionary.asWritten = false;
    TreeFacts facts;
    bool isPartial = true;
    const DictionaryPointer tree = readTree(newFile(), options, {}, facts, isPartial);
    QVERIFY(tree);
    QVERIFY(facts.isEmpty());
}

QTEST_GUILESS_MAIN(tst_DictionaryTree)

#include "tst_DictionaryTree.moc"
