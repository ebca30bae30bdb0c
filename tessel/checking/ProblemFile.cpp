#include "checking/ProblemFile.h"

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

QString numberOrEmpty(qint64 number)
{
    return number > 0 ? QString::number(number) : QString();
}

} // namespace

ProblemFile::ProblemFile(const QString& path, bool forSpreadsheet)
    : m_isCsv(isCsvName(path))
    , m_output(path)
    , m_csv(m_isCsv ? m_output.sink() : ByteSink([](const QByteArray&) {}), forSpreadsheet)
    , m_json(m_output.sink())
{
    if (m_isCsv) {
        m_csv.addLine({ QStringLiteral("file"), QStringLiteral("line"), QStringLiteral("case"),
            QStringLiteral("record"), QStringLiteral("variable"), QStringLiteral("value"),
            QStringLiteral("kind"), QStringLiteral("first_file"), QStringLiteral("first_line") });
    } else {
        m_json.beginObject({ { QStringLiteral("tesselProblems"), JsonVersion } });
        m_json.beginList("problems");
    }
}

bool ProblemFile::isCsvName(const QString& path)
{
    return path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
}

bool ProblemFile::isName(const QString& path)
{
    return isCsvName(path) || path.endsWith(QLatin1String(".json"), Qt::CaseInsensitive);
}

void ProblemFile::add(const ShownProblem& problem)
{
    if (m_isCsv)
        addCsv(problem);
    else
        m_json.beginText() += problem.json();
}

void ProblemFile::addCsv(const ShownProblem& problem)
{
    m_csv.addLine({ problem.file, numberOrEmpty(problem.line), problem.caseKey, problem.record,
        problem.variable, problem.value, problem.kind, problem.otherFile,
        numberOrEmpty(problem.otherLine) });
}

bool ProblemFile::finish()
{
    if (!m_isCsv) {
        m_json.endList();
        m_json.endObject();
        m_json.finish();
    }
    return m_output.finish();
}
