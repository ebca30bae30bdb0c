#include "FileReader.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/StatDictionary.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>

namespace {

// More than any dictionary has; what is larger is a data file of some other kind.
constexpr qint64 LargestDictionary = 268'435'456;

QString text(const char* source)
{
    return QCoreApplication::translate("FileReader", source);
}

ReadFile failed(const char* problem)
{
    ReadFile result;
    result.problem = text(problem);
    return result;
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

QString kindOf(const TValueSetItem& entry)
{
    if (!entry.special)
        return {};
    switch (entry.type) {
    case 1:
        return text("missing");
    case 2:
        return text("not applicable");
    case 3:
        return text("refused");
    default:
        return text("default");
    }
}

// The variables of an entity stand in the order of the items of its record, and have the labels of
// their first value set with values.
CodeKinds kindsOf(const TCSPro& cspro, const TOxEntity& root)
{
    QHash<const TCSProRecord*, const TOxEntity*> entities;
    for (int i = 0; i < cspro.records->size(); ++i)
        entities.insert(cspro.records->at(i), root.getChildren()->at(i));
    QHash<const TOxEntity*, int> counts;
    CodeKinds kinds;
    for (const TCSProItem* item : qAsConst(*cspro.items)) {
        const TOxEntity* const entity = entities.value(item->record, &root);
        const TOxVariable* const variable = entity->getVariables()->at(counts[entity]++);
        const auto found = std::find_if(item->valueSets->cbegin(), item->valueSets->cend(),
            [](const TCSProValueSet* set) { return !set->items->isEmpty(); });
        if (found == item->valueSets->cend())
            continue;
        const TCSProValueSet* const set = (*found)->linkedSet ? (*found)->linkedSet : *found;
        kinds.insert(variable, [set](int label) { return kindOf(*set->items->at(label)); });
    }
    return kinds;
}

CodeKinds kindsOf(const TStatFileDescription& description, const TOxEntity& root)
{
    const auto file = std::make_shared<const TStatFileDescription>(description);
    CodeKinds kinds;
    for (int i = 0; i < file->variables.size(); ++i) {
        if (file->variables.at(i).labelSet < 0)
            continue;
        kinds.insert(root.getVariables()->at(i), [file, i](int label) {
            const TStatVariableDescription& variable = file->variables.at(i);
            const TStatLabelSet& set = file->labelSets.at(variable.labelSet);
            return variable.isMissing(set.labels.at(label).value) ? text("missing") : QString();
        });
    }
    return kinds;
}

ReadFile readStatFile(const QString& path, TStatFileKind kind)
{
    ReadFile result;
    const TStatFileDescription file = readStatDescription(path, kind);
    const bool isReadable = file.variablesOutcome.isWhole();
    if (isReadable) {
        result.dictionary.reset(buildDictionary(file));
        result.kinds = kindsOf(file, *result.dictionary->getRoot());
    }
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
        importer.setReading(CSProReading::AsWritten);
    try {
        importer.openFile();
        if (isDictionary(*importer.dictionary)) {
            result.dictionary.reset(buildDictionary(importer));
            result.kinds = kindsOf(*importer.dictionary, *result.dictionary->getRoot());
        } else {
            result.problem = text("The file is no dictionary.");
        }
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
        return failed("There is no such file.");
    QFile file(path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return failed("The file cannot be read.");
    if (file.size() == 0)
        return failed("The file is empty.");
    const QByteArray head = file.peek(32);
    if (isEncryptedSpss(head))
        return failed("The file is encrypted.");
    if (isSpss(head))
        return readStatFile(path, TStatFileKind::Spss);
    if (isStata(head))
        return readStatFile(path, TStatFileKind::Stata);
    if (file.size() > LargestDictionary)
        return failed("The file is no dictionary.");
    return readCSPro(path, asWritten);
}
