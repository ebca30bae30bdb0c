#include "FileReader.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/StatDictionary.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

// More than any dictionary has; what is larger is a data file of some other kind.
constexpr qint64 LargestDictionary = 268'435'456;

QString text(const char* source)
{
    return QCoreApplication::translate("FileReader", source);
}

// Said behind eight bytes.
bool isEncryptedSpss(const QByteArray& head)
{
    return head.mid(8, 12) == "ENCRYPTEDSAV";
}

bool isSpss(const QByteArray& head)
{
    return head.startsWith("$FL2") || head.startsWith("$FL3");
}

// Marked text, or the number of an older format, the byte order (1 or 2), and 1.
bool isStata(const QByteArray& head)
{
    if (head.startsWith("<stata_dta>"))
        return true;
    if (head.size() < 3)
        return false;
    const auto format = static_cast<unsigned char>(head.at(0));
    return format >= 102 && format <= 116 && (head.at(1) == 1 || head.at(1) == 2)
        && head.at(2) == 1;
}

ReadFile readStatFile(const QString& path, TStatFileKind kind)
{
    ReadFile result;
    const TStatFileDescription file = readStatDescription(path, kind);
    const bool isReadable = file.variablesOutcome.isWhole();
    if (isReadable)
        result.dictionary.reset(buildDictionary(file));
    if (file.isWhole())
        return result;
    const TStatOutcome& outcome = isReadable ? file.outcome : file.variablesOutcome;
    const QStringList details = QStringList(outcome.errorText) + outcome.errorDetails;
    result.problem = isReadable
        ? text("The file is damaged; it is shown without the value labels that are missing.")
        : text("The file cannot be read.");
    result.problem += QLatin1Char('\n') + details.join(QLatin1Char('\n')).trimmed();
    return result;
}

// The reader is tolerant: any text gives a dictionary, one that is none an empty one.
bool isDictionary(const TCSPro& cspro)
{
    return !cspro.name.isEmpty() || !cspro.records->isEmpty() || !cspro.items->isEmpty();
}

ReadFile readCSPro(const QString& path, bool asWritten)
{
    ReadFile result;
    TCSProDataImport importer(path);
    if (asWritten)
        importer.setReadingRules(CSProReadingRules::asWritten());
    try {
        importer.openFile();
        if (isDictionary(*importer.dictionary))
            result.dictionary.reset(buildDictionary(importer));
        else
            result.problem = text("The file is no dictionary.");
        result.passedOver = importer.dictionary->problems().size();
    } catch (OxErrorManager* error) {
        result.problem =
            error->getErrorMessage().replace(QLatin1String("\r\n"), QLatin1String("\n"));
        delete error;
    }
    delete importer.dictionary; // closes its message box
    return result;
}

} // namespace

ReadFile readFile(const QString& path, bool asWritten)
{
    const QFileInfo info(path);
    if (!info.exists())
        return { nullptr, text("There is no such file.") };
    QFile file(path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return { nullptr, text("The file cannot be read.") };
    if (file.size() == 0)
        return { nullptr, text("The file is empty.") };
    const QByteArray head = file.peek(32);
    if (isEncryptedSpss(head))
        return { nullptr, text("The file is encrypted.") };
    if (isSpss(head))
        return readStatFile(path, TStatFileKind::Spss);
    if (isStata(head))
        return readStatFile(path, TStatFileKind::Stata);
    if (file.size() > LargestDictionary)
        return { nullptr, text("The file is no dictionary.") };
    return readCSPro(path, asWritten);
}
