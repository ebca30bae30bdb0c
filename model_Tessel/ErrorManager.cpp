#include <model_Tessel/ErrorManager.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/MLDB.h>
#include <model_Tessel/Numbers_p.h>

#include <algorithm>
#include <iterator>
#include <utility>

int ErrorNumber = 0;

namespace {

struct CatalogueRow {
    int code;
    const char* name; // last component of the key
    const char* text;
};

// In order of the codes, for the search.
constexpr CatalogueRow catalogue[] = {
    { DivByZero, "DivByZero", "Division by Zero" },
    { BadSelectionFile, "BadSelectionFile", "Selection code not found" },
    { FileNameEmpty, "FileNameEmpty", "File name empty" },
    { FileNotFound, "FileNotFound", "File not found" },
    { FileNotLoad, "FileNotLoad", "Could not load from file" },
    { FileNotOpen, "FileNotOpen", "Could not open file" },
    { FileBusy, "FileBusy", "Cannot Save file. It may probably be busy" },
    { FileNotASCII, "FileNotASCII", "Incorrect file format. It must be ASCII" },
    { FileNotDelBak, "FileNotDelBak", "Cannot Delete backup file" },
    { FileReadLine, "FileReadLine", "Could not read line from file" },
    { FileInvalidHeader, "FileInvalidHeader", "Invalid header from file" },
    { FileUnknowError, "FileUnknowError", "Cannot Create file. Unknow error" },
    { DirNotFound, "DirNotFound", "Directory not found" },
    { IncludeNotCheck, "IncludeNotCheck", "Error in check includes" },
    { IncludeNotFound, "IncludeNotFound", "Include not found" },
    { PointerNULL, "PointerNULL", "System Error. Parameter Invalid ( NULL )" },
    { FeatureNotSupported, "FeatureNotSupported", "System Error. Feature not supported" },
    { ToDouble, "ToDouble", "System Error. Problem converting to integer or real value" },
    { SerializeOut, "SerializeOut", "System Error. Problem serializing out" },
    { AlreadyRegister, "AlreadyRegister", "System Error. Already Register" },
    { RegLoaderNotInit, "RegLoaderNotInit", "System Error. Register Loader not initialized" },
    { RegLoaderNotReg, "RegLoaderNotReg", "System Error. Format not registered" },
    { ParentNULL, "ParentNULL", "System Error. Maybe Parent NULL" },
    { SectionNameEmpty, "SectionNameEmpty", "Section name empty" },
    { SectionExists, "SectionExists", "Section alredy exists" },
    { ItemNotFound, "ItemNotFound", "Item not found" },
    { InvalidRecType, "InvalidRecType", "Invalid Record Type" },
    { InvalidVarType, "InvalidVarType", "Invalid Variable Type" },
    { InvalidVarLabel, "InvalidVarLabel", "Invalid Variable Label" },
    { InvalidNumMV, "InvalidNumMV", "Invalid Number of Missing Values" },
    { SelectionNotFound, "SelectionNotFound", "Selection not found" },
    { InvalidContents, "InvalidContents", "Invalid contents in line" },
    { InvalidVariableInfo, "InvalidVariableInfo", "Missing variable information" },
};

constexpr CatalogueRow fallbackRow = { NotSet, "ErrorUnknow", "Unknow or not set error" };

const CatalogueRow& catalogueRow(int code)
{
    const auto* row = std::lower_bound(std::begin(catalogue), std::end(catalogue), code,
        [](const CatalogueRow& candidate, int wanted) { return candidate.code < wanted; });
    return row != std::end(catalogue) && row->code == code ? *row : fallbackRow;
}

QString catalogueText(const char* name, const char* defaultText)
{
    const QString none = QLatin1String("");
    return MLDBGetMessage(QLatin1String("ErrorManager.ErrorMessage.") + QLatin1String(name),
        QLatin1String(defaultText), none, none, none, none, none, none);
}

} // namespace

OxErrorManager::OxErrorManager(const QString& className, int code)
{
    init(className, code, QString(), 0);
}

OxErrorManager::OxErrorManager(const QString& className, int code, int line)
{
    init(className, code, QString(), line);
}

OxErrorManager::OxErrorManager(const QString& className, int code, const QString& text)
{
    init(className, code, text, 0);
    displayMessageBox();
}

OxErrorManager::OxErrorManager(const QString& className, int code, const QString& text, int line)
{
    init(className, code, text, line);
}

OxErrorManager::~OxErrorManager() = default;

void OxErrorManager::init(QString className, int code, QString text, int line)
{
    this->className = std::move(className);
    this->code = code;
    this->text = std::move(text);
    this->line = line;
}

QString OxErrorManager::getErrorMessage() const
{
    if (!text.isEmpty() && code == PlainMessage)
        return text;

    QString message = QLatin1String("Class : ") + className + TokenLineEnd;
    message += QLatin1String("Error : ") + asCharacter(code) + TokenLineEnd;
    if (line > 0)
        message += QLatin1String("Source Line : ") + asCharacter(line) + TokenLineEnd;
    message += TokenLineEnd + catalogueText("Message", "Message") + QLatin1String(" : ");
    if (!text.isEmpty() && code == CustomText) {
        message += text + TokenLineEnd;
    } else {
        message += getMLDBMessage();
        if (!text.isEmpty())
            message += TokenLineEnd + QLatin1Char('[') + text + QLatin1String(" ]");
    }
    return message;
}

QString OxErrorManager::getMLDBMessage() const
{
    const CatalogueRow& row = catalogueRow(code);
    return catalogueText(row.name, row.text);
}

void OxErrorManager::displayMessageBox() const
{
    TESSEL_DEBUG << getErrorMessage();
}
