#include <model_Tessel/Constants.h>

#include <QtTest>

class tst_Constants : public QObject {
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void icons_data();
    void icons();
    void providerTypes();
};

void tst_Constants::texts_data()
{
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("text");

    QTest::newRow("type of texts") << TypeNameString << "STRING";
    QTest::newRow("type of reals") << TypeNameReal << "REAL";
    QTest::newRow("type of integers") << TypeNameInteger << "INTEGER";

    QTest::newRow("colon") << TokenColon << ":";
    QTest::newRow("comma") << TokenComma << ",";
    QTest::newRow("line end") << TokenLineEnd << "\r\n";
    QTest::newRow("equals") << TokenEquals << "=";
    QTest::newRow("semicolon") << TokenSemicolon << ";";
    QTest::newRow("space") << TokenSpace << " ";
    QTest::newRow("tab") << TokenTab << "\t";
    QTest::newRow("underscore") << TokenUnderscore << "_";
    QTest::newRow("yes") << TokenYes << "YES";

    QTest::newRow("class CSPro") << ClassNameCSPro << "CSPro";
    QTest::newRow("class CSProDataImport") << ClassNameCSProDataImport << "CSProDataImport";
    QTest::newRow("class CSProValueSet") << ClassNameCSProValueSet << "CSProValueSet";
    QTest::newRow("class DataImport") << ClassNameDataImport << "DataImport";
    QTest::newRow("class SPSSDataImport") << ClassNameSPSSDataImport << "SPSSDataImport";
    QTest::newRow("class Range") << ClassNameRange << "Range";
    QTest::newRow("class Variable") << ClassNameVariable << "Variable";
    QTest::newRow("class Utilities") << ClassNameUtilities << "Utilities";

    QTest::newRow("section Dictionary") << CSProSectionDictionary << "[Dictionary]";
    QTest::newRow("section Record") << CSProSectionRecord << "[Record]";
    QTest::newRow("section Item") << CSProSectionItem << "[Item]";
    QTest::newRow("section ValueSet") << CSProSectionValueSet << "[ValueSet]";
    QTest::newRow("section IdItems") << CSProSectionIdItems << "[IdItems]";
    QTest::newRow("section Level") << CSProSectionLevel << "[Level]";
    QTest::newRow("section Relation") << CSProSectionRelation << "[Relation]";
    QTest::newRow("word DICTIONARY") << CSProTypeDictionary << "DICTIONARY";
    QTest::newRow("word RECORD") << CSProTypeRecord << "RECORD";
    QTest::newRow("word ITEM") << CSProTypeItem << "ITEM";
    QTest::newRow("word VALUESET") << CSProTypeValueSet << "VALUESET";
}

void tst_Constants::texts()
{
    QFETCH(QString, constant);
    QTEST(constant, "text");
}

void tst_Constants::icons_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("file");

    QTest::newRow("about") << IconAbout << "48px-About.png";
    QTest::newRow("checklist") << IconChecklist << "48px-Checklist.png";
    QTest::newRow("database dictionary") << IconDictDatabase << "48px-Dict-Database.png";
    QTest::newRow("existing file") << IconFileExisting << "48px-File-existing.png";
    QTest::newRow("graph style file") << IconFileGraphStyle << "48px-File-graphstyle.png";
    QTest::newRow("map file") << IconFileMaps << "48px-File-maps.png";
    QTest::newRow("new file") << IconFileNew << "48px-File-new.png";
    QTest::newRow("program file") << IconFilePrograms << "48px-File-programs.png";
    QTest::newRow("selection file") << IconFileSelections << "48px-File-selections.png";
    QTest::newRow("table style file") << IconFileTableStyle << "48px-File-tablestyle.png";
    QTest::newRow("expressions") << IconFxExpressions << "48px-Fx-Expressions.png";
    QTest::newRow("new, without a size") << IconNew << "new.png";
    QTest::newRow("open document") << IconDocumentOpen << "48px-Document-open.png";
    QTest::newRow("placeholder") << IconPlaceholder << "48px-Placeholder.png";
    QTest::newRow("selection") << IconSelection << "48px-Selection.png";
    QTest::newRow("save project") << IconProjectSave << "48px-Project-save.png";
    QTest::newRow("save project as") << IconProjectSaveAs << "48px-Project-save_as.png";
    QTest::newRow("code and name") << IconCodeName << "48px-Code-Name.png";
    QTest::newRow("contract") << IconContract << "48px-Contract.png";
    QTest::newRow("summatory") << IconSummatory << "48px-Summatory.png";
    QTest::newRow("entity name") << IconEntityName << "48px-Entity-Name.png";
    QTest::newRow("expand") << IconExpand << "48px-Expand.png";
    QTest::newRow("node information") << IconNodeInformation << "48px-Node-Information.png";
    QTest::newRow("yellow square") << IconYellowSquare << "48px-Yellow-Square.png";
    QTest::newRow("gray square") << IconGraySquare << "48px-Gray-Square.png";
    QTest::newRow("delete") << IconDelete << "48px-Delete.png";
    QTest::newRow("next, in lower case") << IconNext << "48px-next.png";
    QTest::newRow("previous, in lower case") << IconPrevious << "48px-previous.png";
}

void tst_Constants::icons()
{
    QFETCH(QString, path);
    QFETCH(QString, file);
    QCOMPARE(path, ":/icons/res/icons/" + file);
}

void tst_Constants::providerTypes()
{
    QCOMPARE(ProviderTypeNames, QStringList({ "NONE", "CSPRO", "CSV", "SSPS", "STATA" }));
}

QTEST_APPLESS_MAIN(tst_Constants)

#include "tst_Constants.moc"
