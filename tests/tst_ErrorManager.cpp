#include <model_Tessel/ErrorManager.h>

#include <QDebug>
#include <QLoggingCategory>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <type_traits>
#include <vector>

namespace {

struct LogRecord {
    QtMsgType type;
    QString category;
    QString text;
};

// Collects every record of Qt's log while it lives, instead of printing it.
class LogRecorder {
public:
    LogRecorder()
    {
        records.clear();
        previous = qInstallMessageHandler(record);
    }
    ~LogRecorder()
    {
        qInstallMessageHandler(previous);
    }
    static std::vector<LogRecord> records;

private:
    Q_DISABLE_COPY(LogRecorder)

    static void record(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        records.push_back({ type, QString::fromLatin1(context.category), text });
    }

    QtMessageHandler previous = nullptr;
};

std::vector<LogRecord> LogRecorder::records;

// The text of a debug record that holds one value, as the stream writes it.
QString logged(const QString& value)
{
    QString result;
    QDebug(&result).nospace() << value;
    return result;
}

struct Row {
    int code;
    const char* name;
    const char* text;
};

constexpr Row catalogue[] = {
    { 4, "DivByZero", "Division by Zero" },
    { 7, "BadSelectionFile", "Selection code not found" },
    { 11, "FileNameEmpty", "File name empty" },
    { 13, "FileNotFound", "File not found" },
    { 14, "FileNotLoad", "Could not load from file" },
    { 15, "FileNotOpen", "Could not open file" },
    { 16, "FileBusy", "Cannot Save file. It may probably be busy" },
    { 17, "FileNotASCII", "Incorrect file format. It must be ASCII" },
    { 18, "FileNotDelBak", "Cannot Delete backup file" },
    { 19, "FileReadLine", "Could not read line from file" },
    { 20, "FileInvalidHeader", "Invalid header from file" },
    { 22, "FileUnknowError", "Cannot Create file. Unknow error" },
    { 31, "DirNotFound", "Directory not found" },
    { 40, "IncludeNotCheck", "Error in check includes" },
    { 41, "IncludeNotFound", "Include not found" },
    { 101, "PointerNULL", "System Error. Parameter Invalid ( NULL )" },
    { 102, "FeatureNotSupported", "System Error. Feature not supported" },
    { 103, "ToDouble", "System Error. Problem converting to integer or real value" },
    { 104, "SerializeOut", "System Error. Problem serializing out" },
    { 105, "AlreadyRegister", "System Error. Already Register" },
    { 106, "RegLoaderNotInit", "System Error. Register Loader not initialized" },
    { 107, "RegLoaderNotReg", "System Error. Format not registered" },
    { 108, "ParentNULL", "System Error. Maybe Parent NULL" },
    { 212, "SectionNameEmpty", "Section name empty" },
    { 213, "SectionExists", "Section alredy exists" },
    { 216, "ItemNotFound", "Item not found" },
    { 221, "InvalidRecType", "Invalid Record Type" },
    { 222, "InvalidVarType", "Invalid Variable Type" },
    { 223, "InvalidVarLabel", "Invalid Variable Label" },
    { 224, "InvalidNumMV", "Invalid Number of Missing Values" },
    { 231, "SelectionNotFound", "Selection not found" },
    { 242, "InvalidContents", "Invalid contents in line" },
    { 243, "InvalidVariableInfo", "Missing variable information" },
};
static_assert(sizeof(catalogue) / sizeof(catalogue[0]) == 33);

const QString fallback = QStringLiteral("Unknow or not set error");

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

} // namespace

class tst_ErrorManager : public QObject {
    Q_OBJECT

private slots:
    void enumerators_data();
    void enumerators();
    void enumerationIsPlainInt();

    void constructorWithClassAndCode();
    void constructorWithLine();
    void constructorWithText();
    void constructorWithTextAndLine();
    void fieldsStandInDeclarationOrder();
    void initReplacesAllFields();
    void initTakesItsOwnTexts();

    void onlyTheTextConstructorLogs_data();
    void onlyTheTextConstructorLogs();
    void logOfAnEmptyText();
    void displayMessageBoxLogsTheMessage();
    void switchedOffCategoryStaysSilent();

    void catalogueText_data();
    void catalogueText();
    void everyOtherCodeFallsBack();

    void message_data();
    void message();
    void messageReadsTheFields();
    void renderingChangesNothing();

    void thrownPointerKeepsItsFields();
    void exceptionOperationsAreInherited();
    void errorNumberIsLeftAlone();
};

void tst_ErrorManager::enumerators_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("code");

    QTest::newRow("NotSet") << int(OxErrorCode::NotSet) << 0;
    QTest::newRow("CustomText") << int(OxErrorCode::CustomText) << 1;
    QTest::newRow("PlainMessage") << int(OxErrorCode::PlainMessage) << 2;
    QTest::newRow("DivByZero") << int(OxErrorCode::DivByZero) << 4;
    QTest::newRow("BadSelectionFile") << int(OxErrorCode::BadSelectionFile) << 7;
    QTest::newRow("FileNameEmpty") << int(OxErrorCode::FileNameEmpty) << 11;
    QTest::newRow("FileNotFound") << int(OxErrorCode::FileNotFound) << 13;
    QTest::newRow("FileNotLoad") << int(OxErrorCode::FileNotLoad) << 14;
    QTest::newRow("FileNotOpen") << int(OxErrorCode::FileNotOpen) << 15;
    QTest::newRow("FileBusy") << int(OxErrorCode::FileBusy) << 16;
    QTest::newRow("FileNotASCII") << int(OxErrorCode::FileNotASCII) << 17;
    QTest::newRow("FileNotDelBak") << int(OxErrorCode::FileNotDelBak) << 18;
    QTest::newRow("FileReadLine") << int(OxErrorCode::FileReadLine) << 19;
    QTest::newRow("FileInvalidHeader") << int(OxErrorCode::FileInvalidHeader) << 20;
    QTest::newRow("FileUnknowError") << int(OxErrorCode::FileUnknowError) << 22;
    QTest::newRow("DirNotFound") << int(OxErrorCode::DirNotFound) << 31;
    QTest::newRow("IncludeNotCheck") << int(OxErrorCode::IncludeNotCheck) << 40;
    QTest::newRow("IncludeNotFound") << int(OxErrorCode::IncludeNotFound) << 41;
    QTest::newRow("PointerNULL") << int(OxErrorCode::PointerNULL) << 101;
    QTest::newRow("FeatureNotSupported") << int(OxErrorCode::FeatureNotSupported) << 102;
    QTest::newRow("ToDouble") << int(OxErrorCode::ToDouble) << 103;
    QTest::newRow("SerializeOut") << int(OxErrorCode::SerializeOut) << 104;
    QTest::newRow("AlreadyRegister") << int(OxErrorCode::AlreadyRegister) << 105;
    QTest::newRow("RegLoaderNotInit") << int(OxErrorCode::RegLoaderNotInit) << 106;
    QTest::newRow("RegLoaderNotReg") << int(OxErrorCode::RegLoaderNotReg) << 107;
    QTest::newRow("ParentNULL") << int(OxErrorCode::ParentNULL) << 108;
    QTest::newRow("ItemNotStored") << int(OxErrorCode::ItemNotStored) << 211;
    QTest::newRow("SectionNameEmpty") << int(OxErrorCode::SectionNameEmpty) << 212;
    QTest::newRow("SectionExists") << int(OxErrorCode::SectionExists) << 213;
    QTest::newRow("ItemNotFound") << int(OxErrorCode::ItemNotFound) << 216;
    QTest::newRow("InvalidRecType") << int(OxErrorCode::InvalidRecType) << 221;
    QTest::newRow("InvalidVarType") << int(OxErrorCode::InvalidVarType) << 222;
    QTest::newRow("InvalidVarLabel") << int(OxErrorCode::InvalidVarLabel) << 223;
    QTest::newRow("InvalidNumMV") << int(OxErrorCode::InvalidNumMV) << 224;
    QTest::newRow("SelectionNotFound") << int(OxErrorCode::SelectionNotFound) << 231;
    QTest::newRow("InvalidContents") << int(OxErrorCode::InvalidContents) << 242;
    QTest::newRow("InvalidVariableInfo") << int(OxErrorCode::InvalidVariableInfo) << 243;
}

void tst_ErrorManager::enumerators()
{
    QFETCH(int, value);
    QFETCH(int, code);
    QCOMPARE(value, code);
}

// A named code and a plain number must reach the same constructor.
void tst_ErrorManager::enumerationIsPlainInt()
{
    static_assert(std::is_same<std::underlying_type_t<OxErrorCode>, int>::value);
    static_assert(std::is_convertible<OxErrorCode, int>::value);
    const OxErrorManager named(QStringLiteral("CSPro"), OxErrorCode::PointerNULL);
    const OxErrorManager unscoped(QStringLiteral("CSPro"), PointerNULL);
    const OxErrorManager plain(QStringLiteral("CSPro"), 101);
    QCOMPARE(named.code, 101);
    QCOMPARE(named.getErrorMessage(), plain.getErrorMessage());
    QCOMPARE(unscoped.getErrorMessage(), plain.getErrorMessage());
}

void tst_ErrorManager::constructorWithClassAndCode()
{
    const OxErrorManager error(QStringLiteral("DataImport"), 107);
    QCOMPARE(error.className, QStringLiteral("DataImport"));
    QCOMPARE(error.code, 107);
    QVERIFY(error.text.isEmpty());
    QCOMPARE(error.line, 0);
}

void tst_ErrorManager::constructorWithLine()
{
    const OxErrorManager error(QStringLiteral("CSPro"), 242, 17);
    QCOMPARE(error.className, QStringLiteral("CSPro"));
    QCOMPARE(error.code, 242);
    QVERIFY(error.text.isEmpty());
    QCOMPARE(error.line, 17);
}

void tst_ErrorManager::constructorWithText()
{
    const LogRecorder recorder;
    const OxErrorManager error(QStringLiteral("CSPro"), 242, QStringLiteral("X=1"));
    QCOMPARE(error.className, QStringLiteral("CSPro"));
    QCOMPARE(error.code, 242);
    QCOMPARE(error.text, QStringLiteral("X=1"));
    QCOMPARE(error.line, 0);
}

void tst_ErrorManager::constructorWithTextAndLine()
{
    const OxErrorManager error(QStringLiteral("CSPro"), -5, QStringLiteral("X=1"), -9);
    QCOMPARE(error.className, QStringLiteral("CSPro"));
    QCOMPARE(error.code, -5);
    QCOMPARE(error.text, QStringLiteral("X=1"));
    QCOMPARE(error.line, -9);
}

void tst_ErrorManager::fieldsStandInDeclarationOrder()
{
    const OxErrorManager error(QStringLiteral("CSPro"), 1);
    const std::vector<const void*> addresses = { &error.code, &error.line, &error.className,
        &error.text };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_ErrorManager::initReplacesAllFields()
{
    OxErrorManager error(QStringLiteral("CSPro"), 242, QStringLiteral("X=1"), 3);
    error.init(QStringLiteral("DataImport"), 107, QStringLiteral("DBF"), 8);
    QCOMPARE(error.className, QStringLiteral("DataImport"));
    QCOMPARE(error.code, 107);
    QCOMPARE(error.text, QStringLiteral("DBF"));
    QCOMPARE(error.line, 8);

    const LogRecorder recorder;
    error.init(QString(), 0, QString(), 0);
    QVERIFY(error.className.isEmpty());
    QCOMPARE(error.code, 0);
    QVERIFY(error.text.isEmpty());
    QCOMPARE(error.line, 0);
    QVERIFY(LogRecorder::records.empty());
}

void tst_ErrorManager::initTakesItsOwnTexts()
{
    OxErrorManager error(QStringLiteral("CSPro"), 242, QStringLiteral("X=1"), 3);
    error.init(error.text, error.line, error.className, error.code);
    QCOMPARE(error.className, QStringLiteral("X=1"));
    QCOMPARE(error.code, 3);
    QCOMPARE(error.text, QStringLiteral("CSPro"));
    QCOMPARE(error.line, 242);
    error.init(error.className, error.code, error.className, error.line);
    QCOMPARE(error.className, QStringLiteral("X=1"));
    QCOMPARE(error.text, QStringLiteral("X=1"));
}

void tst_ErrorManager::onlyTheTextConstructorLogs_data()
{
    QTest::addColumn<bool>("withText");
    QTest::addColumn<bool>("withLine");
    QTest::addColumn<int>("records");

    QTest::newRow("class and code") << false << false << 0;
    QTest::newRow("class, code and line") << false << true << 0;
    QTest::newRow("class, code and text") << true << false << 1;
    QTest::newRow("class, code, text and line") << true << true << 0;
}

void tst_ErrorManager::onlyTheTextConstructorLogs()
{
    QFETCH(bool, withText);
    QFETCH(bool, withLine);
    QFETCH(int, records);

    const LogRecorder recorder;
    const QString className = QStringLiteral("CSProValueSet");
    const QString text = QStringLiteral("12");
    std::unique_ptr<OxErrorManager> error;
    if (withText && withLine)
        error = std::make_unique<OxErrorManager>(className, 211, text, 5);
    else if (withText)
        error = std::make_unique<OxErrorManager>(className, 211, text);
    else if (withLine)
        error = std::make_unique<OxErrorManager>(className, 211, 5);
    else
        error = std::make_unique<OxErrorManager>(className, 211);

    QCOMPARE(int(LogRecorder::records.size()), records);
    for (const LogRecord& record : LogRecorder::records) {
        QCOMPARE(record.type, QtDebugMsg);
        QCOMPARE(record.category, QStringLiteral("default"));
        QCOMPARE(record.text, logged(error->getErrorMessage()));
    }
    // Neither rendering nor destruction adds to the log.
    error.reset();
    QCOMPARE(int(LogRecorder::records.size()), records);
}

// The constructor decides about the log, not whether its text says anything.
void tst_ErrorManager::logOfAnEmptyText()
{
    const LogRecorder recorder;
    const OxErrorManager error(QStringLiteral("Range"), 13, QString());
    QCOMPARE(int(LogRecorder::records.size()), 1);
    QCOMPARE(LogRecorder::records.front().text, logged(error.getErrorMessage()));
}

void tst_ErrorManager::displayMessageBoxLogsTheMessage()
{
    const OxErrorManager error(QStringLiteral("CSPro"), 65, QStringLiteral("X=1"), 66);
    QTest::ignoreMessage(QtDebugMsg,
        "\"Class : CSPro\\r\\nError : A\\r\\nSource Line : B\\r\\n\\r\\n"
        "Message : Unknow or not set error\\r\\n[X=1 ]\"");
    error.displayMessageBox();

    const OxErrorManager plain(QStringLiteral("CSPro"), 2, QStringLiteral("Stop"), 0);
    QTest::ignoreMessage(QtDebugMsg, "\"Stop\"");
    plain.displayMessageBox();
}

void tst_ErrorManager::switchedOffCategoryStaysSilent()
{
    const LogRecorder recorder;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const OxErrorManager error(QStringLiteral("CSPro"), 242, QStringLiteral("X=1"));
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(LogRecorder::records.empty());
    QCOMPARE(error.text, QStringLiteral("X=1"));
}

void tst_ErrorManager::catalogueText_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    for (const Row& row : catalogue)
        QTest::newRow(row.name) << row.code << QString::fromLatin1(row.text);

    QTest::newRow("NotSet has no text") << 0 << fallback;
    QTest::newRow("CustomText has no text") << 1 << fallback;
    QTest::newRow("PlainMessage has no text") << 2 << fallback;
    QTest::newRow("gap at 3") << 3 << fallback;
    QTest::newRow("gap at 12") << 12 << fallback;
    QTest::newRow("gap at 21") << 21 << fallback;
    QTest::newRow("below 101") << 100 << fallback;
    QTest::newRow("above 108") << 109 << fallback;
    QTest::newRow("ItemNotStored has no text") << 211 << fallback;
    QTest::newRow("above the last") << 244 << fallback;
    QTest::newRow("far above the last") << 9999 << fallback;
    QTest::newRow("negative") << -1 << fallback;
    QTest::newRow("negative of a catalogued code") << -101 << fallback;
    QTest::newRow("catalogued code in the low 16 bits") << 65536 + 101 << fallback;
    QTest::newRow("highest") << highest << fallback;
    QTest::newRow("lowest") << lowest << fallback;
}

void tst_ErrorManager::catalogueText()
{
    QFETCH(int, code);
    QFETCH(QString, text);

    const OxErrorManager error(QStringLiteral("Utilities"), code);
    QCOMPARE(error.getMLDBMessage(), text);
    const OxErrorManager withText(QStringLiteral("Utilities"), code, QStringLiteral("a"), 1);
    QCOMPARE(withText.getMLDBMessage(), text);
}

void tst_ErrorManager::everyOtherCodeFallsBack()
{
    std::set<int> catalogued;
    for (const Row& row : catalogue)
        catalogued.insert(row.code);
    for (int code = -300; code < 1000; ++code) {
        const bool isFallback =
            OxErrorManager(QStringLiteral("CSPro"), code).getMLDBMessage() == fallback;
        QVERIFY2(isFallback != (catalogued.count(code) == 1), qPrintable(QString::number(code)));
    }
}

void tst_ErrorManager::message_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("message");

    const QString cspro = QStringLiteral("CSPro");
    const QString none;
    const auto character = [](ushort code) { return QString(QChar(code)); };
    const auto head = [](const QString& className, const QString& code) {
        return QString(QStringLiteral("Class : ") + className + QStringLiteral("\r\nError : ")
            + code + QStringLiteral("\r\n"));
    };
    const QString sourceLine = QStringLiteral("Source Line : ");
    const QString end = QStringLiteral("\r\n");
    const QString label = QStringLiteral("\r\nMessage : ");

    QTest::newRow("catalogue text and bracketed text")
        << cspro << 242 << QStringLiteral("X=1") << 0
        << QString::fromUtf8("Class : CSPro\r\nError : \u00f2\r\n\r\n"
                             "Message : Invalid contents in line\r\n[X=1 ]");
    QTest::newRow("catalogue text alone")
        << QStringLiteral("DataImport") << 101 << none << 0
        << QStringLiteral("Class : DataImport\r\nError : e\r\n\r\n"
                          "Message : System Error. Parameter Invalid ( NULL )");
    QTest::newRow("empty text is no text")
        << cspro << 101 << QStringLiteral("") << 0
        << QStringLiteral("Class : CSPro\r\nError : e\r\n\r\n"
                          "Message : System Error. Parameter Invalid ( NULL )");
    QTest::newRow("blank text is a text")
        << cspro << 101 << QStringLiteral(" ") << 0
        << QStringLiteral("Class : CSPro\r\nError : e\r\n\r\n"
                          "Message : System Error. Parameter Invalid ( NULL )\r\n[  ]");
    QTest::newRow("with a source line")
        << cspro << 101 << none << 66
        << QStringLiteral("Class : CSPro\r\nError : e\r\nSource Line : B\r\n\r\n"
                          "Message : System Error. Parameter Invalid ( NULL )");
    QTest::newRow("with a source line and a text")
        << cspro << 107 << QStringLiteral("DBF") << 35
        << QStringLiteral("Class : CSPro\r\nError : k\r\nSource Line : #\r\n\r\n"
                          "Message : System Error. Format not registered\r\n[DBF ]");
    QTest::newRow("no class name")
        << none << 101 << none << 0
        << QStringLiteral("Class : \r\nError : e\r\n\r\n"
                          "Message : System Error. Parameter Invalid ( NULL )");

    QTest::newRow("plain message")
        << cspro << 2 << QStringLiteral("Stop here") << 0 << QStringLiteral("Stop here");
    QTest::newRow("plain message ignores the line")
        << cspro << 2 << QStringLiteral(" two\r\nlines ") << 12 << QStringLiteral(" two\r\nlines ");
    QTest::newRow("plain message without text")
        << cspro << 2 << none << 0 << QString(head(cspro, character(2)) + label + fallback);
    QTest::newRow("plain message without text, with a line")
        << cspro << 2 << QStringLiteral("") << 65
        << QString(head(cspro, character(2)) + sourceLine + 'A' + end + label + fallback);

    QTest::newRow("custom text") << cspro << 1 << QStringLiteral("Bad value") << 0
                                 << QString(head(cspro, character(1)) + label
                                        + QStringLiteral("Bad value") + end);
    QTest::newRow("custom text with a line")
        << cspro << 1 << QStringLiteral("Bad value") << 65
        << QString(head(cspro, character(1)) + sourceLine + 'A' + end + label
               + QStringLiteral("Bad value") + end);
    QTest::newRow("custom text without text")
        << cspro << 1 << none << 0 << QString(head(cspro, character(1)) + label + fallback);

    QTest::newRow("entry not stored")
        << QStringLiteral("CSProValueSet") << 211 << QStringLiteral("7") << 0
        << QString(head(QStringLiteral("CSProValueSet"), character(211)) + label + fallback
               + QStringLiteral("\r\n[7 ]"));
    QTest::newRow("code not set with a text")
        << cspro << 0 << QStringLiteral("a") << 0
        << QString(head(cspro, character(0)) + label + fallback + QStringLiteral("\r\n[a ]"));
    QTest::newRow("placeholders in the texts stay")
        << QStringLiteral("%1") << 13 << QStringLiteral("100%2") << 0
        << QStringLiteral("Class : %1\r\nError : \r\r\n\r\nMessage : File not found\r\n[100%2 ]");

    QTest::newRow("code not set is a null character")
        << cspro << 0 << none << 0 << QString(head(cspro, character(0)) + label + fallback);
    QTest::newRow("code beyond Latin-1")
        << cspro << 0x20ac << none << 0
        << QString(head(cspro, character(0x20ac)) + label + fallback);
    QTest::newRow("code -1") << cspro << -1 << none << 0
                             << QString(head(cspro, character(0xffff)) + label + fallback);
    QTest::newRow("code -101") << cspro << -101 << none << 0
                               << QString(head(cspro, character(0xff9b)) + label + fallback);
    QTest::newRow("code beyond 16 bits shows its low half")
        << cspro << 65536 + 101 << none << 0
        << QString(head(cspro, QStringLiteral("e")) + label + fallback);
    QTest::newRow("highest code") << cspro << highest << none << 0
                                  << QString(head(cspro, character(0xffff)) + label + fallback);
    QTest::newRow("lowest code") << cspro << lowest << none << 0
                                 << QString(head(cspro, character(0)) + label + fallback);

    QTest::newRow("line 1") << cspro << 101 << none << 1
                            << QStringLiteral(
                                   "Class : CSPro\r\nError : e\r\nSource Line : \u0001\r\n\r\n"
                                   "Message : System Error. Parameter Invalid ( NULL )");
    QTest::newRow("line -1 is none")
        << cspro << 13 << none << -1
        << QStringLiteral("Class : CSPro\r\nError : \r\r\n\r\nMessage : File not found");
    QTest::newRow("lowest line is none")
        << cspro << 13 << none << lowest
        << QStringLiteral("Class : CSPro\r\nError : \r\r\n\r\nMessage : File not found");
    QTest::newRow("line beyond 16 bits shows its low half")
        << cspro << 13 << none << 65536 + 67
        << QStringLiteral(
               "Class : CSPro\r\nError : \r\r\nSource Line : C\r\n\r\nMessage : File not found");
    QTest::newRow("line 65536 is a null character")
        << cspro << 13 << none << 65536
        << QString(QStringLiteral("Class : CSPro\r\nError : \r\r\nSource Line : ") + character(0)
               + QStringLiteral("\r\n\r\nMessage : File not found"));
    QTest::newRow("highest line") << cspro << 13 << none << highest
                                  << QString(QStringLiteral(
                                                 "Class : CSPro\r\nError : \r\r\nSource Line : ")
                                         + character(0xffff)
                                         + QStringLiteral("\r\n\r\nMessage : File not found"));
}

void tst_ErrorManager::message()
{
    QFETCH(QString, className);
    QFETCH(int, code);
    QFETCH(QString, text);
    QFETCH(int, line);
    QFETCH(QString, message);

    QCOMPARE(OxErrorManager(className, code, text, line).getErrorMessage(), message);
}

// The message is composed when asked for, from whatever the fields hold then.
void tst_ErrorManager::messageReadsTheFields()
{
    OxErrorManager error(QStringLiteral("CSPro"), 242);
    error.className = QStringLiteral("Range");
    error.code = 101;
    error.line = 66;
    error.text = QStringLiteral("5");
    QCOMPARE(error.getErrorMessage(),
        QStringLiteral("Class : Range\r\nError : e\r\nSource Line : B\r\n\r\n"
                       "Message : System Error. Parameter Invalid ( NULL )\r\n[5 ]"));
}

void tst_ErrorManager::renderingChangesNothing()
{
    const OxErrorManager error(QStringLiteral("CSPro"), 1, QStringLiteral("Bad"), 4);
    const QString first = error.getErrorMessage();
    QCOMPARE(error.getErrorMessage(), first);
    QCOMPARE(error.className, QStringLiteral("CSPro"));
    QCOMPARE(error.code, 1);
    QCOMPARE(error.text, QStringLiteral("Bad"));
    QCOMPARE(error.line, 4);
}

void tst_ErrorManager::thrownPointerKeepsItsFields()
{
    try {
        throw new OxErrorManager(QStringLiteral("DataImport"), 107, QStringLiteral("DBF"), 2);
    } catch (OxErrorManager* caught) {
        const std::unique_ptr<OxErrorManager> owned(caught);
        QCOMPARE(owned->getErrorMessage(),
            QStringLiteral("Class : DataImport\r\nError : k\r\nSource Line : \u0002\r\n\r\n"
                           "Message : System Error. Format not registered\r\n[DBF ]"));
        QCOMPARE(owned->className, QStringLiteral("DataImport"));
        QCOMPARE(owned->code, 107);
        QCOMPARE(owned->text, QStringLiteral("DBF"));
        QCOMPARE(owned->line, 2);
    }
}

// Always thrown by pointer, so the operations that copy an exception know its base alone.
void tst_ErrorManager::exceptionOperationsAreInherited()
{
    static_assert(std::is_base_of<QException, OxErrorManager>::value);
    static_assert(std::has_virtual_destructor<OxErrorManager>::value);
    const OxErrorManager error(QStringLiteral("CSPro"), 242);
    QCOMPARE(error.what(), QException().what());

    const std::unique_ptr<QException> copy(error.clone());
    QVERIFY(copy);
    QVERIFY(!dynamic_cast<OxErrorManager*>(copy.get()));

    bool raisedAsBase = false;
    try {
        error.raise();
    } catch (const OxErrorManager&) {
        raisedAsBase = false;
    } catch (const QException&) {
        raisedAsBase = true;
    }
    QVERIFY(raisedAsBase);
}

void tst_ErrorManager::errorNumberIsLeftAlone()
{
    static_assert(std::is_same<decltype(ErrorNumber), int>::value);
    QCOMPARE(ErrorNumber, 0);
    ErrorNumber = 5;
    const OxErrorManager error(QStringLiteral("CSPro"), 242, QStringLiteral("X=1"), 3);
    QVERIFY(!error.getErrorMessage().isEmpty());
    const int after = ErrorNumber;
    ErrorNumber = 0;
    QCOMPARE(after, 5);
}

QTEST_GUILESS_MAIN(tst_ErrorManager)

#include "tst_ErrorManager.moc"
