#include "lookups/LookupCheck.h"

#include "reading/InputFile.h"
#include "process/Progress.h"

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QHash>
#include <QTemporaryFile>
#include <QTextCodec>

#include <algorithm>
#include <limits>

namespace {

constexpr qint64 ChunkSize = 1'048'576;

/* A lookup that deletes its values. */
class OwnLookup : public TOxLookup {
public:
    OwnLookup() = default;
    Q_DISABLE_COPY(OwnLookup)
    ~OwnLookup() override
    {
        for (const auto& record : values)
            delete record.second;
    }
};

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

bool import(const LookupTask& task, TOxLookup& lookup, QStringList& lines)
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
    // Every message is shown, so none may give way to the notice that there are too many.
    lookup.maxMessages = std::numeric_limits<int>::max();
    Progress progress(QStringLiteral("reading %1").arg(path));
    lookup.setImportProgress([&progress](qint64 bytesRead, qint64 size) {
        progress.show(bytesRead, size);
        return true;
    });
    std::map<QString, int*> unused;
    return lookup.consistencyCheck(checkOnly, unused, &lines)
        || failInput(path, 0, QStringLiteral("no such file"));
}

LookupMessage messageOf(const QString& line)
{
    using Kind = LookupMessage::Kind;
    const int mark = line.indexOf(QLatin1Char('_'));
    const QString text = line.mid(mark + 1);
    Kind kind = Kind::WrongKeyLength;
    if (text.startsWith(QLatin1String("Separator ")))
        kind = Kind::NoSeparator;
    else if (text.endsWith(QLatin1String("] already exists")))
        kind = Kind::DuplicateKey;
    return { line.leftRef(mark).toInt(), kind, text };
}

void takeMessages(const QStringList& lines, LookupOutcome& outcome)
{
    using Kind = LookupMessage::Kind;
    outcome.messages.reserve(lines.size());
    int lineWithoutSeparator = 0;
    for (const QString& line : lines) {
        const LookupMessage message = messageOf(line);
        if (message.kind == Kind::NoSeparator) {
            ++outcome.withoutSeparator;
            lineWithoutSeparator = message.line;
        } else if (message.kind == Kind::DuplicateKey) {
            ++outcome.duplicateKeys;
            outcome.repeatedBySeparator += message.line == lineWithoutSeparator ? 1 : 0;
        } else {
            ++outcome.wrongKeyLengths;
        }
        outcome.messages.append(message);
    }
}

QVector<ValueCount> countValues(const TOxLookup& lookup)
{
    QHash<QString, int> counts;
    for (const auto& [key, value] : lookup.values) {
        if (!key.isEmpty())
            ++counts[value->value];
    }
    QVector<ValueCount> frequencies;
    frequencies.reserve(counts.size());
    for (auto count = counts.cbegin(); count != counts.cend(); ++count)
        frequencies.append({ count.key(), count.value() });
    std::sort(frequencies.begin(), frequencies.end(), [](const ValueCount& a, const ValueCount& b) {
        return a.keys != b.keys ? a.keys > b.keys : a.value < b.value;
    });
    return frequencies;
}

} // namespace

QString kindName(LookupMessage::Kind kind)
{
    switch (kind) {
    case LookupMessage::Kind::NoSeparator:
        return QStringLiteral("no-separator");
    case LookupMessage::Kind::WrongKeyLength:
        return QStringLiteral("wrong-key-length");
    case LookupMessage::Kind::DuplicateKey:
        break;
    }
    return QStringLiteral("duplicate-key");
}

bool checkLookup(const LookupTask& task, LookupOutcome& outcome)
{
    OwnLookup lookup;
    QStringList lines;
    if (!import(task, lookup, lines))
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
    takeMessages(lines, outcome);
    if (task.countsValues)
        outcome.frequencies = countValues(lookup);
    if (task.variable)
        outcome.comparison = compareLabels(lookup.values, *task.variable);
    return true;
}
