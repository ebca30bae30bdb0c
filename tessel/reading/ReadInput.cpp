#include "reading/ReadInput.h"

#include "process/Console.h"

#include <model_Tessel/InputFile.h>

namespace {

using Kind = DictionaryFileKind;

struct KindName {
    Kind kind;
    const char* name;
};

// The first of two names of a kind, and of two kinds of a name, is the one given.
constexpr KindName kindNames[] = { { Kind::CSPro, "cspro" }, { Kind::CSProDb, "cspro" },
    { Kind::Spss, "spss" }, { Kind::Stata, "stata" } };

} // namespace

QString kindName(DictionaryFileKind kind)
{
    for (const KindName& entry : kindNames) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return QStringLiteral("unknown");
}

DictionaryFileKind kindOfName(const QString& name)
{
    for (const KindName& entry : kindNames) {
        if (name == QLatin1String(entry.name))
            return entry.kind;
    }
    return Kind::Unknown;
}

bool failInput(const QString& path, int line, const QString& text)
{
    Console::tell(path, line, Console::Severity::Error, text);
    return false;
}

bool failInput(const QString& path, const QString& text, const QStringList& items)
{
    failInput(path, 0, text);
    for (const QString& item : items)
        failInput(path, 0, item);
    return false;
}

bool readInput(const QString& path, QByteArray& bytes)
{
    TInputFile file(path);
    return (file.open() && file.readAll(bytes)) || failInput(path, 0, file.errorText());
}
