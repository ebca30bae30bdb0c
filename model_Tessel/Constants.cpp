// Hosts read these as plain globals, built when the library is loaded.
// clazy:excludeall=non-pod-global-static
#include <model_Tessel/Constants.h>

const QString TypeNameString = QStringLiteral("STRING");
const QString TypeNameReal = QStringLiteral("REAL");
const QString TypeNameInteger = QStringLiteral("INTEGER");

// Kept: the fourth name is spelt this way, so no SPSS source has a type of the list.
const QStringList ProviderTypeNames = { QStringLiteral("NONE"), QStringLiteral("CSPRO"),
    QStringLiteral("CSV"), QStringLiteral("SSPS"), QStringLiteral("STATA") };

const QString TokenColon = QStringLiteral(":");
const QString TokenComma = QStringLiteral(",");
const QString TokenLineEnd = QStringLiteral("\r\n");
const QString TokenEquals = QStringLiteral("=");
const QString TokenSemicolon = QStringLiteral(";");
const QString TokenSpace = QStringLiteral(" ");
const QString TokenTab = QStringLiteral("\t");
const QString TokenUnderscore = QStringLiteral("_");
const QString TokenYes = QStringLiteral("YES");

const QString IconAbout = QStringLiteral(":/icons/res/icons/48px-About.png");
const QString IconChecklist = QStringLiteral(":/icons/res/icons/48px-Checklist.png");
const QString IconDictDatabase = QStringLiteral(":/icons/res/icons/48px-Dict-Database.png");
const QString IconFileExisting = QStringLiteral(":/icons/res/icons/48px-File-existing.png");
const QString IconFileGraphStyle = QStringLiteral(":/icons/res/icons/48px-File-graphstyle.png");
const QString IconFileMaps = QStringLiteral(":/icons/res/icons/48px-File-maps.png");
const QString IconFileNew = QStringLiteral(":/icons/res/icons/48px-File-new.png");
const QString IconFilePrograms = QStringLiteral(":/icons/res/icons/48px-File-programs.png");
const QString IconFileSelections = QStringLiteral(":/icons/res/icons/48px-File-selections.png");
const QString IconFileTableStyle = QStringLiteral(":/icons/res/icons/48px-File-tablestyle.png");
const QString IconFxExpressions = QStringLiteral(":/icons/res/icons/48px-Fx-Expressions.png");
const QString IconNew = QStringLiteral(":/icons/res/icons/new.png");
const QString IconDocumentOpen = QStringLiteral(":/icons/res/icons/48px-Document-open.png");
const QString IconPlaceholder = QStringLiteral(":/icons/res/icons/48px-Placeholder.png");
const QString IconSelection = QStringLiteral(":/icons/res/icons/48px-Selection.png");
const QString IconProjectSave = QStringLiteral(":/icons/res/icons/48px-Project-save.png");
const QString IconProjectSaveAs = QStringLiteral(":/icons/res/icons/48px-Project-save_as.png");
const QString IconCodeName = QStringLiteral(":/icons/res/icons/48px-Code-Name.png");
const QString IconContract = QStringLiteral(":/icons/res/icons/48px-Contract.png");
const QString IconSummatory = QStringLiteral(":/icons/res/icons/48px-Summatory.png");
const QString IconEntityName = QStringLiteral(":/icons/res/icons/48px-Entity-Name.png");
const QString IconExpand = QStringLiteral(":/icons/res/icons/48px-Expand.png");
const QString IconNodeInformation = QStringLiteral(":/icons/res/icons/48px-Node-Information.png");
const QString IconYellowSquare = QStringLiteral(":/icons/res/icons/48px-Yellow-Square.png");
const QString IconGraySquare = QStringLiteral(":/icons/res/icons/48px-Gray-Square.png");
const QString IconDelete = QStringLiteral(":/icons/res/icons/48px-Delete.png");
const QString IconNext = QStringLiteral(":/icons/res/icons/48px-next.png");
const QString IconPrevious = QStringLiteral(":/icons/res/icons/48px-previous.png");

const QString ClassNameCSPro = QStringLiteral("CSPro");
const QString ClassNameCSProDataImport = QStringLiteral("CSProDataImport");
const QString ClassNameCSProValueSet = QStringLiteral("CSProValueSet");
const QString ClassNameDataImport = QStringLiteral("DataImport");
const QString ClassNameSPSSDataImport = QStringLiteral("SPSSDataImport");
const QString ClassNameRange = QStringLiteral("Range");
const QString ClassNameVariable = QStringLiteral("Variable");
const QString ClassNameUtilities = QStringLiteral("Utilities");

const QString CSProSectionDictionary = QStringLiteral("[Dictionary]");
const QString CSProSectionRecord = QStringLiteral("[Record]");
const QString CSProSectionItem = QStringLiteral("[Item]");
const QString CSProSectionValueSet = QStringLiteral("[ValueSet]");
const QString CSProSectionIdItems = QStringLiteral("[IdItems]");
const QString CSProSectionLevel = QStringLiteral("[Level]");
const QString CSProSectionRelation = QStringLiteral("[Relation]");

const QString CSProTypeDictionary = QStringLiteral("DICTIONARY");
const QString CSProTypeRecord = QStringLiteral("RECORD");
const QString CSProTypeItem = QStringLiteral("ITEM");
const QString CSProTypeValueSet = QStringLiteral("VALUESET");

const QString CSProKeyLabel = QStringLiteral("Label");
const QString CSProKeyName = QStringLiteral("Name");
const QString CSProKeyNote = QStringLiteral("Note");
const QString CSProKeyRecordTypeStart = QStringLiteral("RecordTypeStart");
const QString CSProKeyRecordTypeLen = QStringLiteral("RecordTypeLen");
const QString CSProKeyPositions = QStringLiteral("Positions");
const QString CSProKeyZeroFill = QStringLiteral("ZeroFill");
const QString CSProKeyDecimalChar = QStringLiteral("DecimalChar");
const QString CSProKeyRecordTypeValue = QStringLiteral("RecordTypeValue");
const QString CSProKeyRequired = QStringLiteral("Required");
const QString CSProKeyMaxRecords = QStringLiteral("MaxRecords");
const QString CSProKeyRecordLen = QStringLiteral("RecordLen");
const QString CSProKeyStart = QStringLiteral("Start");
const QString CSProKeyLen = QStringLiteral("Len");
const QString CSProKeyDataType = QStringLiteral("DataType");
const QString CSProKeyItemType = QStringLiteral("ItemType");
const QString CSProKeyOccurrences = QStringLiteral("Occurrences");
const QString CSProKeyOccurrenceLabel = QStringLiteral("OccurenceLabel");
const QString CSProKeyDecimal = QStringLiteral("Decimal");
const QString CSProKeyValue = QStringLiteral("Value");

const QString CSProWordAlpha = QStringLiteral("ALPHA");
const QString CSProWordSubItem = QStringLiteral("SUBITEM");
const QString CSProWordSpecial = QStringLiteral("SPECIAL");
const QString CSProWordMissing = QStringLiteral("MISSING");
const QString CSProWordNotAppl = QStringLiteral("NOTAPPL");
