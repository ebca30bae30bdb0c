#include "lookups/LookupCheck.h"

#include "lookups/SeparatorGuess.h"
#include "reading/InputFile.h"
#include "process/Progress.h"

#include <QFile>
#include <QTemporaryFile>
#include <QTextCodec>

namespace {

constexpr qint64 ChunkSize = 1'048'576;

// Bytes of these encodings are no characters, so line ends cannot be found among them.
bool isWide(const QByteArray& encoding)
{
    return encoding.startsWith("UTF-16") || encoding.startsWith("UTF-32");
}

// Writes the file's text into copy as UTF-8.
bool convert(const LookupFile& file, QTemporaryFile& copy)
{
    QFile original(file.path);
    if (!original.open(QIODevice::ReadOnly)) {
        return failInput(
            file.path, 0, QStringLiteral("cannot be read: %1").arg(original.errorString()));
    }
    const QTextCodec* const codec = QTextCodec::codecForName(file.encoding);
    QTextCodec::ConverterState state;
    bool isWritten = copy.open();
    while (isWritten && !original.atEnd()) {
        const QByteArray bytes = original.read(ChunkSize);
        const QByteArray text = codec->toUnicode(bytes.constData(), bytes.size(), &state).toUtf8();
        isWritten = !bytes.isEmpty() && copy.write(text) == text.size();
    }
    return (isWritten && copy.flush())
        || failInput(file.path, 0,
            QStringLiteral("cannot be converted from %1: %2")
                .arg(QString::fromLatin1(file.encoding), copy.errorString()));
}

bool import(const LookupTask& task, TOxLookup& lookup)
{
    const QString& path = task.file.path;
    QTemporaryFile copy;
    lookup.setFfileName(path);
    lookup.setTextCodec(task.file.encoding);
    if (isWide(task.file.encoding)) {
        if (!convert(task.file, copy))
            return false;
        lookup.setFfileName(copy.fileName());
        lookup.setTextCodec("UTF-8");
    }
    lookup.setSeparator(task.separator);
    Progress progress(QStringLiteral("reading %1").arg(path));
    lookup.setImportProgress([&progress](qint64 bytesRead, qint64 size) {
        progress.show(bytesRead, size);
        return true;
    });
    std::map<QString, int*> unused;
    return lookup.consistencyCheck(checkOnly, unused, nullptr)
        || failInput(path, 0, QStringLiteral("no such file"));
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

QString kindName(TOxLookupProblem::Kind kind)
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
    if (!import(task, lookup))
        return false;
    // Lines without a separator before the first record stand under an empty key.
    outcome.keys = static_cast<int>(lookup.values.size() - lookup.values.count(QString()));
    if (outcome.keys == 0) {
        return failInput(task.file.path, 1,
            QStringLiteral("no line has the separator %1 behind a key; name another with "
                           "--separator")
                .arg(separatorNames().at(task.separator)));
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
