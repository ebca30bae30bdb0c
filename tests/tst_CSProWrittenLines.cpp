// Lines of CSPro dictionaries as they are written: keys, notes, levels, relations and languages,
// and what is told of odd ones.
#include "CSProDictionaries.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

namespace {

const char translated[] = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\n"
                          "RecordTypeLen=1\n[Languages]\nEN=English\nFR=French\n"
                          "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\n"
                          "[Item]\nLabel=Sex|Sexe\nName=A\nStart=2\nLen=1\n"
                          "[ValueSet]\nName=V\nValue=1;Man|Homme\nValue=2;Woman\n";

const CSProValueDetail& detail(const TCSProValueSet& valueSet, int index)
{
    return valueSet.detail(valueSet.getValueSetItem(index));
}

} // namespace

class tst_CSProWrittenLines : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void keysAndProblems_data();
    void keysAndProblems();
    void problemsTellTheLine_data();
    void problemsTellTheLine();
    void problemsComeInOrderOfLines();
    void levels();
    void notes_data();
    void notes();
    void relations();
    void labelTexts_data();
    void labelTexts();
    void languageOfFields();
};

void tst_CSProWrittenLines::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProWrittenLines::keysAndProblems_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("problems");

    row("nothing", QString(), QStringList());
    row("a sound dictionary", values("Value=1;One\n"), QStringList());
    row("sections in another case",
        QStringLiteral("[DICTIONARY]\nName=D\n[iditems]\n[level]\n"
                       "[LANGUAGES]\n[relation]\n[NoEdit]\n"),
        QStringList());
    row("an unknown section", dictionary("[Odd]\nName=x\n[Item]\nStart=2\nLen=1\n"),
        QStringList { "11 UnknownSection" });
    row("an unknown section behind blank lines", dictionary("\n\n[Odd]\n"),
        QStringList { "13 UnknownSection" });
    row("an unknown key of the dictionary", "[Dictionary]\nName=D\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of a level", "[Level]\nName=L\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of a record", "[Record]\nName=R\nColour=red\nRecordTypeValue='1'\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of an item", dictionary("[Item]\nStart=2\nColour=red\nLen=1\n"),
        QStringList { "13 UnknownKey" });
    row("an unknown key of a value set",
        dictionary("[Item]\nStart=2\nLen=1\n[ValueSet]\nColour=red\n"),
        QStringList { "15 UnknownKey" });
    row("an unknown key of a value", values("Value=1;One\nColour=red\nValue=2;Two\n"),
        QStringList { "18 UnknownKey" });
    row("an unknown key of a relation", "[Relation]\nName=L\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("keys that begin with a known one",
        dictionary("[Item]\nNames=B\nStart=2\nLen=1\nLength=9\n"),
        QStringList { "12 UnknownKey", "15 UnknownKey" });
    row("unknown keys behind blank lines",
        dictionary("[Item]\n\nStart=2\n\n\nColour=red\nLen=1\n  \nShape=round\n"),
        QStringList { "16 UnknownKey", "19 UnknownKey" });
    row("an unknown key behind blank lines alone",
        dictionary("[Item]\nStart=2\nLen=1\n\n\nShape=x\n"), QStringList { "16 UnknownKey" });
    row("a value's key behind blank lines", values("\nValue=1;One\n\n\nColour=red\n"),
        QStringList { "21 UnknownKey" });
    row("lines that end in a carriage return",
        QString(dictionary("[Item]\nStart=2\n\nLen=1\nColour=red\n")).replace("\n", "\r\n"),
        QStringList { "15 UnknownKey" });
    row("keys that are passed over",
        "[Dictionary]\nName=D\nAlias=E\nSecurityOptions=00\nValueSetImages=Yes\n[Level]\nAlias=E\n"
        "[Record]\nName=R\nAlias=E\nRecordTypeValue='1'\nNote=n\nOccurrenceLabel=1,a\n"
        "[Item]\nStart=2\nLen=1\nAlias=E\nAlias=F\nCaptureType=RadioButton\n"
        "CaptureDateFormat=YYYYMMDD\nNote=n\nOccurenceLabel=1,a\n"
        "[ValueSet]\nName=V\nAlias=E\nNote=n\nValue=1;x\nNote=n\nImage=i\nTextColor=#000000\n",
        QStringList());
    row("a malformed number", dictionary("[Item]\nName=A\nLen=1\nStart=x\n"),
        QStringList { "14 NotANumber" });
    row("a malformed number behind a blank line",
        dictionary("[Item]\n\nName=A\nLen=1\nStart=1,5\n"), QStringList { "15 NotANumber" });
    row("a number that is too large", dictionary("[Item]\nName=A\nLen=1\nStart=99999999999\n"),
        QStringList { "14 NotANumber" });
    row("malformed numbers of the dictionary", "[Dictionary]\nRecordTypeStart=a\nRecordTypeLen=b\n",
        QStringList { "2 NotANumber", "3 NotANumber" });
    row("malformed numbers of a record",
        "[Record]\nRecordTypeValue='1'\nMaxRecords=a\nRecordLen=b\n",
        QStringList { "3 NotANumber", "4 NotANumber" });
    row("unknown words",
        dictionary("[Item]\nStart=2\nLen=1\nItemType=Half\nDataType=Greek\n"
                   "DecimalChar=Perhaps\nZeroFill=1\n"),
        QStringList { "14 UnknownWord", "15 UnknownWord", "16 UnknownWord", "17 UnknownWord" });
    row("the words of the defaults",
        dictionary("[Item]\nStart=2\nLen=1\nItemType=Item\n"
                   "DataType=numeric\nDecimalChar=no\nZeroFill=No\n"),
        QStringList());
    row("a line without a key", dictionary("[Item]\nStart=2\nLen=1\nnonsense\n"),
        QStringList { "14 LineWithoutKey" });
    row("a line with an empty key", dictionary("[Item]\nStart=2\nLen=1\n=nonsense\n"),
        QStringList { "14 LineWithoutKey" });
    row("a line without a key among values", values("Value=1;One\nnonsense\n"),
        QStringList { "18 LineWithoutKey" });
    row("a line without a key among languages", "[Languages]\nEN=English\nnonsense\n",
        QStringList { "3 LineWithoutKey" });
    row("a comment", dictionary("[Item]\nStart=2\nLen=1\n.remark\n"), QStringList());
    row("a comment with an equals sign", dictionary("[Item]\nStart=2\nLen=1\n.Start=7\n"),
        QStringList());
    row("a comment among values", values("Value=1;One\n.remark\n"), QStringList());
    row("an item without a length", dictionary("[Item]\nStart=2\n"),
        QStringList { "11 ItemWithoutLength" });
    row("an item that never occurs", dictionary("[Item]\nStart=2\nLen=1\nOccurrences=0\n"),
        QStringList { "11 ItemDropped" });
    row("a record type twice", dictionary("[Record]\nName=S\nRecordTypeValue='1'\n"),
        QStringList { "11 RecordTypeRepeated" });
    row("a value set without an item", dictionary("[ValueSet]\nName=V\nValue=1;One\n"),
        QStringList { "11 ValueSetWithoutItem" });
    row("a subitem without an item", dictionary("[Item]\nStart=2\nLen=1\nItemType=SubItem\n"),
        QStringList { "11 SubItemWithoutParent" });
    row("a subitem of an item of another record",
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[Record]\nName=S\nRecordTypeValue='2'\n"
                   "[Item]\nName=B\nStart=2\nLen=1\nItemType=SubItem\n"),
        QStringList { "18 SubItemWithoutParent" });
    row("a link without values", dictionary("[Item]\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=3\n"),
        QStringList { "14 LinkWithoutValues" });
    row("an occurrence label without a number",
        dictionary("[Item]\nStart=2\nLen=1\nOccurrences=2\nOccurrenceLabel=Wife\n"),
        QStringList { "15 NotANumber" });
    row("an item without a start", dictionary("[Item]\nName=A\nLen=1\n"),
        QStringList { "11 ItemWithoutStart" });
    row("lines before any section", "Name=D\n.remark\nLabel=x\n[Dictionary]\nName=D\n",
        QStringList { "1 LineOutsideSection" });
    row("a key twice", dictionary("[Item]\nStart=2\nLen=1\nStart=3\nstart=4\n"),
        QStringList { "14 RepeatedKey", "15 RepeatedKey" });
    row("notes and labels of occurrences twice",
        dictionary("[Item]\nStart=2\nLen=1\nOccurrences=2\nNote=a\nNote=b\n"
                   "OccurrenceLabel=1,a\nOccurrenceLabel=2,b\n"),
        QStringList());
    row("a range from high to low", values("Value=9:1;Back\n"), QStringList { "15 RangeReversed" });
    row("a range of one", values("Value=9:9;One\n"), QStringList());
}

void tst_CSProWrittenLines::keysAndProblems()
{
    QFETCH(QString, text);
    QFETCH(QStringList, problems);
    const Model model(Reading::AsWritten, text);
    QCOMPARE(problemsOf(model.parser).join(QLatin1Char('\n')), problems.join(QLatin1Char('\n')));
}

void tst_CSProWrittenLines::problemsTellTheLine_data()
{
    QTest::addColumn<QString>("sections");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("valueSet");
    QTest::addColumn<QString>("text");

    const auto add = [](const char* name, const QString& sections, Kind kind, const char* item,
                         const char* valueSet, const char* text) {
        row(name, sections, static_cast<int>(kind), QString(item), QString(valueSet),
            QString(text));
    };
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nStart=1\n");
    const QString set = item + QStringLiteral("[ValueSet]\nName=V\nValue=1;One\n");
    const QString alphaSet = QString(set).replace("Start=1", "Start=1\nDataType=Alpha");
    add("a section", "[Odd thing]\n", Kind::UnknownSection, "", "", "[Odd thing]");
    add("a key", "[Item]\nName=A\nLen=1\nStart=1\nColour=red\n", Kind::UnknownKey, "", "",
        "Colour");
    add("a key of a value", set + "Colour=red\n", Kind::UnknownKey, "A", "V", "Colour");
    add("a line", "[Item]\nName=A\nLen=1\nStart=1\nnonsense\n", Kind::LineWithoutKey, "", "",
        "nonsense");
    add("a number", "[Item]\nName=A\nLen=1\nStart = x\n", Kind::NotANumber, "", "", "x");
    add("a word", "[Item]\nName=A\nLen=1\nStart=1\nDataType=Greek\n", Kind::UnknownWord, "", "",
        "Greek");
    add("a special", set + "Name=ODD,Special\n", Kind::UnknownSpecial, "A", "V", "ODD,Special");
    add("a quote", alphaSet + "Value='x;y\n", Kind::UnclosedQuote, "A", "V", "'x;y");
    add("a code", set + "Value=x;y\n", Kind::CodeNotANumber, "A", "V", "x");
    add("a link", item + "[ValueSet]\nName=V\nLink=7\n", Kind::LinkWithoutValues, "A", "V", "7");
    add("a subitem", "[Item]\nName=A\nLen=1\nStart=1\nItemType=SubItem\n",
        Kind::SubItemWithoutParent, "A", "", "");
}

void tst_CSProWrittenLines::problemsTellTheLine()
{
    QFETCH(QString, sections);
    QFETCH(int, kind);
    QFETCH(QString, item);
    QFETCH(QString, valueSet);
    QFETCH(QString, text);
    const Model model(Reading::AsWritten, dictionary(sections));
    const CSProProblem problem = model.parser.problems().value(0);
    QCOMPARE(kindName(problem.kind), kindName(static_cast<Kind>(kind)));
    QCOMPARE(problem.name, item);
    QCOMPARE(problem.valueSet, valueSet);
    QCOMPARE(problem.text, text);
}

void tst_CSProWrittenLines::problemsComeInOrderOfLines()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nColour=red\nName=A\nLen=1\nOdd=1\nDecimal=x\nStart=y\n"
                   "[ValueSet]\nName=V\nValue=x;Odd\nColour=red\nValue='z;Other\n"));
    QVector<int> lines;
    for (const CSProProblem& problem : model.parser.problems())
        lines.append(problem.line);
    QVERIFY(lines.size() >= 6);
    QVector<int> sorted = lines;
    std::sort(sorted.begin(), sorted.end());
    QCOMPARE(lines, sorted);
}

void tst_CSProWrittenLines::levels()
{
    const Model model(Reading::AsWritten,
        "[Dictionary]\nName=D\n[Level]\nLabel=Household\nName=HH\n[IdItems]\n"
        "[Item]\nName=ID1\nStart=2\nLen=1\n[Record]\nName=R1\nRecordTypeValue='1'\n"
        "[Item]\nName=A\nStart=5\nLen=1\n[Level]\nLabel=Person\nName=PP\nNote=Each\n[IdItems]\n"
        "[Item]\nName=ID2\nStart=3\nLen=1\n[Record]\nName=R2\nRecordTypeValue='2'\n"
        "[Item]\nName=B\nStart=5\nLen=1\n[Level]\nName=EMPTY\n[IdItems]\n"
        "[Item]\nName=ID3\nStart=4\nLen=1\n");
    QCOMPARE(model.parser.levels().size(), 3);
    QCOMPARE(model.parser.levels().at(0).name, QStringLiteral("HH"));
    QCOMPARE(model.parser.levels().at(0).label, QStringLiteral("Household"));
    QCOMPARE(model.parser.levels().at(1).note, QStringLiteral("Each"));
    QCOMPARE(model.parser.levels().at(2).name, QStringLiteral("EMPTY"));
    QVector<int> levels;
    for (const TCSProItem* item : qAsConst(*model.parser.items))
        levels.append(item->detail().level);
    QCOMPARE(levels, (QVector<int> { 1, 1, 2, 2, 3 }));
    QCOMPARE(model.parser.getRecord(0)->level, 1);
    QCOMPARE(model.parser.getRecord(1)->level, 2);
    for (const char* name : { "ID1", "ID2", "ID3" })
        QCOMPARE(model.item(name).record, model.parser.commonRecord);
}

void tst_CSProWrittenLines::notes_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("note");
    row("one line", "Note=One note = x", "One note = x");
    row("two lines", "Note=One\nNote=two", "One two");
    row("a break between", "Note=One\\r\\n\nNote=two", "One\ntwo");
    row("a break within", "Note=One\\r\\ntwo", "One\ntwo");
    row("an empty line", "Note=One\\r\\n\nNote=\\r\\n\nNote=two", "One\n\ntwo");
    row("a blank before", "Note=One\\r\\n\nNote=~two", "One\n two");
    row("another tilde", "Note=One~two", "One~two");
    row("no text", "Note=", "");
}

void tst_CSProWrittenLines::notes()
{
    QFETCH(QString, lines);
    QFETCH(QString, note);
    const Model model(Reading::AsWritten,
        "[Dictionary]\nName=D\n" + lines + "\n[Level]\nName=L\n" + lines
            + "\n[IdItems]\n[Record]\nName=R\n" + lines
            + "\nRecordTypeValue='1'\n[Item]\nName=A\nStart=1\n" + lines
            + "\nLen=1\n[ValueSet]\nName=V\n" + lines + "\nValue=1 2;x\n" + lines
            + "\nValue=3;y\n");
    QCOMPARE(model.parser.note(), note);
    QCOMPARE(model.parser.levels().at(0).note, note);
    QCOMPARE(model.parser.getRecord(0)->note, note);
    QCOMPARE(model.item("A").detail().note, note);
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QCOMPARE(set.note(), note);
    QCOMPARE(detail(set, 0).note, note);
    QCOMPARE(detail(set, 1).note, note);
    QCOMPARE(detail(set, 2).note, QString());
    QCOMPARE(set.hasDetails(), true); // the second of two codes is one
    QCOMPARE(detail(set, 2).isEmpty(), true);
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProWrittenLines::relations()
{
    const Model model(Reading::AsWritten,
        "[Relation]\nName=ONE\nPrimary=A\nPrimaryLink=A1\nSecondary=B\nSecondaryLink=B1\n"
        "PrimaryLink=A2\nSecondary=C\nSecondaryLink=C1\n"
        "[Relation]\nName=TWO\nPrimary=A\nSecondary=B\nSecondary=C\nPrimaryLink=A3\nSecondary=D\n"
        "SecondaryLink=D1\n");
    const QVector<CSProRelation>& relations = model.parser.relations();
    QCOMPARE(relations.size(), 2);
    QStringList links;
    for (const CSProRelation& relation : relations) {
        links.append(relation.name + ' ' + relation.primary);
        for (const CSProRelationLink& link : relation.links)
            links.append(link.primaryLink + '/' + link.secondary + '/' + link.secondaryLink);
    }
    QCOMPARE(
        links, (QStringList { "ONE A", "A1/B/B1", "A2/C/C1", "TWO A", "/B/", "/C/", "A3/D/D1" }));
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProWrittenLines::labelTexts_data()
{
    QTest::addColumn<QString>("languages");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");

    const QString three = QStringLiteral("[Languages]\nEN=English\nFR=Français\nJP=日本語\n");
    row("no languages", "", "", "Sex|Sexe", "Sex|Sexe");
    row("no choice", three, "", "Sex|Sexe|性", "Sex");
    row("the first", three, "EN", "Sex|Sexe|性", "Sex");
    row("the second", three, "FR", "Sex|Sexe|性", "Sexe");
    row("the last", three, "JP", "Sex|Sexe|性", "性");
    row("another case", three, "fr", "Sex|Sexe|性", "Sexe");
    row("an unknown language", three, "XX", "Sex|Sexe|性", "Sex");
    row("an empty text", three, "FR", "Sex||性", "Sex");
    row("a text too few", three, "JP", "Sex|Sexe", "Sex");
    row("one text", three, "JP", "Sex", "Sex");
    row("no text", three, "JP", "", "");
}

void tst_CSProWrittenLines::labelTexts()
{
    QFETCH(QString, languages);
    QFETCH(QString, chosen);
    QFETCH(QString, label);
    QFETCH(QString, text);
    const Model model(Reading::AsWritten,
        languages + "[Item]\nLabel=" + label + "\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;"
            + label + "\n",
        QMessageBox::No, chosen);
    QCOMPARE(model.item("A").label, label);
    QCOMPARE(model.parser.labelText(label), text);
    QCOMPARE(model.variable("A").label, text);
    QCOMPARE(model.variable("A").valueLabels, "1 " + text + '\t');
}

void tst_CSProWrittenLines::languageOfFields()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(translated);
    file.close();

    TCSProDataImport import(path);
    import.setReading(Reading::AsWritten);
    import.openFile();
    QCOMPARE(import.getField(0)->label, QStringLiteral("Sex"));
    import.setLanguage(QStringLiteral("fr"));
    import.openFile();
    QCOMPARE(import.getField(0)->label, QStringLiteral("Sexe"));
    QCOMPARE(import.getField(0)->valueLabels, QStringLiteral("1 Homme\t2 Woman\t"));

    TCSPro& parser = *import.dictionary;
    QCOMPARE(parser.languages().size(), 2);
    QCOMPARE(parser.languages().at(1).name, QStringLiteral("FR"));
    QCOMPARE(parser.languages().at(1).label, QStringLiteral("French"));
    QVERIFY(parser.setLanguage(QStringLiteral("EN")));
    QVERIFY(parser.setLanguage(QStringLiteral("FR")));
    QVERIFY(!parser.setLanguage(QStringLiteral("XX")));
    QCOMPARE(parser.labelText(QStringLiteral("Sex|Sexe")), QStringLiteral("Sexe"));
}

QTEST_GUILESS_MAIN(tst_CSProWrittenLines)
#include "tst_CSProWrittenLines.moc"
