#include <tessel_data/DictionaryErrors_p.h>

#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/ProblemText.h>

#include <QFileInfo>

#include <new>

namespace tessel {

namespace {

using Code = DataError::Code;
using Kind = DictionaryFileProblem::Kind;

Code codeOfUnreadable(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isFile() || !info.isReadable())
        return Code::CannotOpen;
    return info.size() == 0 ? Code::NoDictionary : Code::CannotRead;
}

Code codeOf(const DictionaryFileProblem& problem, const QString& path)
{
    switch (problem.kind) {
    case Kind::UnreadableFile:
        return codeOfUnreadable(path);
    case Kind::Encrypted:
        return Code::Encrypted;
    case Kind::OtherKind:
        return Code::NotThisFormat;
    case Kind::LabelsMissing:
    case Kind::Damaged:
    case Kind::Unsupported:
        return Code::Damaged;
    case Kind::OutOfMemory:
        throw std::bad_alloc();
    default:
        return Code::NoDictionary;
    }
}

QString textOf(const DictionaryFileProblem& problem)
{
    QStringList quoted;
    for (const QString& detail : problem.details)
        quoted.append(QLatin1Char('"') + quotedText(detail) + QLatin1Char('"'));
    const QString place =
        problem.line > 0 ? QStringLiteral("line %1: ").arg(problem.line) : QString();
    const QString details =
        quoted.isEmpty() ? QString() : QLatin1Char(' ') + quoted.join(QLatin1String(", "));
    return place + problem.text + details;
}

} // namespace

DataError errorOf(const DictionaryFile& file)
{
    Code code = Code::NoDictionary;
    QStringList texts;
    for (const DictionaryFileProblem& problem : file.problems) {
        if (problem.severity != DictionaryFileProblem::Severity::Error)
            continue;
        if (texts.isEmpty())
            code = codeOf(problem, file.path);
        texts.append(textOf(problem));
    }
    return { code, file.path, texts.join(QLatin1String("; ")) };
}

} // namespace tessel
