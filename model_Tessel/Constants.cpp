// Hosts read these as plain globals, built when the library is loaded.
// clazy:excludeall=non-pod-global-static
#include <model_Tessel/Constants.h>

const QString TypeNameString = QStringLiteral("STRING");
const QString TypeNameReal = QStringLiteral("REAL");
const QString TypeNameInteger = QStringLiteral("INTEGER");

const QString TokenColon = QStringLiteral(":");
const QString TokenComma = QStringLiteral(",");
const QString TokenLineEnd = QStringLiteral("\r\n");
const QString TokenEquals = QStringLiteral("=");
const QString TokenSemicolon = QStringLiteral(";");
const QString TokenSpace = QStringLiteral(" ");
const QString TokenTab = QStringLiteral("\t");
const QString TokenUnderscore = QStringLiteral("_");
const QString TokenYes = QStringLiteral("YES");

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
