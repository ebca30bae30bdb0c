#include "lookups/LookupCheck.h"

#include "reading/ReadInput.h"
#include "process/Progress.h"
#include "text/ShownText.h"

#include <QTextCodec>

#include <algorithm>

namespace {

constexpr int ChunkSize = 1'048'576;

// Bytes of these encodings are no characters, so line ends cannot be found among them.
bool isWide(const QByteArray& encoding)
{
    return encoding.startsWith("UTF-16") || encoding.startsWith("UTF-32");
}

// The file's text in UTF-8.
QByteArray convert(const LookupFile& file)
{
    const QTextCodec* const codec = QTextCodec::codecForName(file.encoding);
    QTextCodec::ConverterState state;
    QByteArray bytes;
    QString text;
    for (int start = 0; start < file.bytes.size(); start += ChunkSize) {
        const int size = std::min(ChunkSize, file.bytes.size() - start);
        text += codec->toUnicode(file.bytes.constData() + start, size, &state);
        // A character may be in two chunks.
        const bool endsInHalf = !text.isEmpty() && text.at(text.size() - 1).isHighSurrogate();
        const int whole = text.size() - (endsInHalf ? 1 : 0);
        bytes += text.left(whole).toUtf8();
        text.remove(0, whole);
    }
    return bytes + text.toUtf8();
}

void import(const LookupTask& task, TOxLookup& lookup)
{
    const LookupFile& file = task.file;
    const bool isConverted = isWide(file.encoding);
    lookup.setFfileName(file.path);
    lookup.setTextCodec(isConverted ? QByteArray("UTF-8") : file.encoding);
    lookup.setSeparator(task.separator);
    Progress progress(QStringLiteral("reading %1").arg(file.path));
    lookup.setImportProgress([&progress](qint64 bytesRead, qint64 size) {
        progress.show(bytesRead, size);
        return true;
    });
    lookup.consistency = checkOnly;
    std::map<QString, int*> unused;
    lookup.importData(isConverted ? convert(file) : file.bytes, unused, nullptr);
}

// Adds up the problems as they come in order of the lines.
class ProblemCounter {
public:
    explicit ProblemCounter(LookupOutcome& outcome)
        : m_outcome(outcome)
    {
    }

    void take(const TOxLookupProblem& problem)
    {
        using Kind = TOxLookupProblem::Kind;
        m_outcome.problems.append(problem);
        const QString shortKey = shortened(problem.key);
        if (shortKey != problem.key)
            m_outcome.problems.last().text = lookupProblemText(problem, shortKey);
        if (problem.kind == Kind::NoSeparator) {
            ++m_outcome.withoutSeparator;
            m_lineWithoutSeparator = problem.line;
        } else if (problem.kind == Kind::DuplicateKey) {
            ++m_outcome.duplicateKeys;
            m_outcome.repeatedBySeparator += problem.line == m_lineWithoutSeparator ? 1 : 0;
        } else {
            ++m_outcome.wrongKeyLengths;
        }
    }

private:
    LookupOutcome& m_outcome;
    int m_lineWithoutSeparator = 0;
};

} // namespace

QString lookupProblemName(TOxLookupProblem::Kind kind)
{
    switch (kind) {
    case TOxLookupProblem::Kind::NoSeparator:
        return QStringLiteral("no-separator");
    case TOxLookupProblem::Kind::WrongKeySize:
        return QStringLiteral("wrong-key-length");
    case TOxLookupProblem::Kind::DuplicateKey:
        break;
    }
    return QStringLiteral("duplicate-key");
}

bool checkLookup(const LookupTask& task, TOxLookup& lookup, LookupOutcome& outcome)
{
    ProblemCounter counter(outcome);
    lookup.setProblemSink([&counter](const TOxLookupProblem& problem) { counter.take(problem); });
    import(task, lookup);
    // Lines without a separator before the first record stand under an empty key.
    outcome.keys = static_cast<int>(lookup.values.size() - lookup.values.count(QString()));
    if (outcome.keys == 0) {
        return failInput(task.file.path, 1,
            QStringLiteral("no line has the separator %1 behind a key; name another with "
                           "--separator")
                .arg(TOxLookup::separatorNames().at(task.separator)));
    }
    outcome.path = task.file.path;
    outcome.encoding = QString::fromLatin1(task.file.encoding);
    outcome.separator = task.separator;
    outcome.isGuessed = task.isGuessed;
    outcome.lines = lookup.lineNumber;
    if (task.countsValues)
        outcome.frequencies = countValues(lookup.values);
    if (task.variable)
        outcome.comparison = compareLabels(lookup.values, *task.variable);
    return true;
}
