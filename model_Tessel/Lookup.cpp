#include <model_Tessel/Lookup.h>

#include <model_Tessel/MLDB.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/UtilFiles.h>

#include <QBuffer>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

QString MsgText;

namespace {

struct Separator {
    char character;
    const char* name;
};

// In the order of their codes.
constexpr Separator separators[] = { { ' ', "space" }, { '\t', "tab" }, { ',', "comma" },
    { ';', "semicolon" }, { ':', "colon" } };

QString catalogueText(const char* key, const char* defaultText, const QString& arg1,
    const QString& arg2 = QString(), const QString& arg3 = QString())
{
    const QString none;
    return MLDBGetMessage(
        QLatin1String(key), QLatin1String(defaultText), arg1, arg2, arg3, none, none, none);
}

// False, with key and value left alone, where the line has no separator or an empty key.
bool splitLine(const QString& line, int separator, QString& key, QString& value)
{
    const int end = line.indexOf(TOxLookup::separatorCharacter(separator));
    if (end <= 0)
        return false;
    int start = end + 1;
    while (separator == 0 && start < line.size() && line.at(start).isSpace())
        ++start;
    key = line.left(end);
    value = line.mid(start);
    return true;
}

// How many characters, at most limit, two texts begin with in common.
int commonLength(const QString& a, const QString& b, int limit)
{
    const int length = std::min({ a.size(), b.size(), limit });
    return static_cast<int>(
        std::mismatch(a.begin(), a.begin() + length, b.begin()).first - a.begin());
}

// The eight characters from start on as a number that orders nearly as they do: those beyond
// Latin-1 are all the same.
quint64 orderNumber(const QString& key, int start)
{
    constexpr int Characters = 8;
    constexpr ushort Highest = 0xFF;
    quint64 number = 0;
    for (int index = start; index < start + Characters; ++index) {
        const ushort character = index < key.size() ? key.at(index).unicode() : 0;
        number = number << 8 | std::min(character, Highest);
    }
    return number;
}

bool isChecking(econsistencyCheck mode)
{
    return mode == checkOnly || mode == checkAndCount;
}

bool isCounting(econsistencyCheck mode)
{
    return mode == countFrequencies || mode == checkAndCount;
}

void setUp(QTextStream& stream, const QByteArray& codec)
{
    stream.setAutoDetectUnicode(true);
    if (QTextCodec* const named = codec.isEmpty() ? nullptr : QTextCodec::codecForName(codec))
        stream.setCodec(named);
}

TOxLookupProblem noSeparator(int line, int separator)
{
    return { line, TOxLookupProblem::Kind::NoSeparator, QString(),
        catalogueText("OxLookup.splitKeyValueAVL.noSeparator", "Separator [%1] does not exist",
            QString(TOxLookup::separatorCharacter(separator))),
        0 };
}

/*
 * One import. A line whose key is not below those before it is inserted at the end, at once. The
 * others are late: they wait, are put in key order and then inserted each beside the one before,
 * which takes a fraction of the time that inserting them as they come takes.
 *
 * The first record of a key still stays: a late key is below one that is there already, so no line
 * inserted at once comes after it with the same key, and late lines with one key stay in order.
 * Problems wait with the duplicates that are found last, and are reported in order of the lines.
 */
class Import {
public:
    Import(TOxLookup& lookup, std::map<QString, int*>& frequencies);

    void takeLine();
    void takeLateLines();
    template <typename Report> void reportProblems(Report report);

private:
    using Place = std::map<QString, TOxLookupValue*>::iterator;
    using ProblemKind = TOxLookupProblem::Kind; // as they follow within a line

    struct LateLine {
        quint64 orderNumber; // of the key, behind what all late keys begin with
        QString key;
        QString value;
        int number;
    };

    struct Problem {
        int line;
        ProblemKind kind;
        QString key;
    };

    void checkKeyLength();
    bool isLate() const;
    void postpone();
    Place insert(Place hint, QString key, QString value, int line);
    void count(const QString& value);
    TOxLookupProblem described(const Problem& problem) const;

    TOxLookup& m_lookup;
    std::map<QString, int*>& m_frequencies;
    const bool m_isChecking;
    const bool m_isCounting;
    int m_firstKeyLength = 0;
    std::vector<LateLine> m_lateLines;
    int m_lateCommon = 0; // characters that all late keys begin with
    std::vector<Problem> m_problems;
};

Import::Import(TOxLookup& lookup, std::map<QString, int*>& frequencies)
    : m_lookup(lookup)
    , m_frequencies(frequencies)
    , m_isChecking(isChecking(lookup.consistency))
    , m_isCounting(isCounting(lookup.consistency))
{
}

void Import::takeLine()
{
    const bool isSplit = splitLine(m_lookup.line, m_lookup.separator, m_lookup.key, m_lookup.value);
    if (m_isChecking) {
        if (!isSplit)
            m_problems.push_back({ m_lookup.lineNumber, ProblemKind::NoSeparator, QString() });
        checkKeyLength();
    }
    if (isLate())
        postpone();
    else
        insert(m_lookup.values.end(), m_lookup.key, m_lookup.value, m_lookup.lineNumber);
}

void Import::checkKeyLength()
{
    const int length = m_lookup.key.size();
    if (m_firstKeyLength == 0)
        m_firstKeyLength = length;
    else if (length != m_firstKeyLength)
        m_problems.push_back({ m_lookup.lineNumber, ProblemKind::WrongKeySize, m_lookup.key });
}

bool Import::isLate() const
{
    return !m_lookup.values.empty() && m_lookup.key < m_lookup.values.rbegin()->first;
}

void Import::postpone()
{
    const QString& key = m_lookup.key;
    m_lateCommon =
        m_lateLines.empty() ? key.size() : commonLength(m_lateLines.front().key, key, m_lateCommon);
    m_lateLines.push_back({ 0, key, m_lookup.value, m_lookup.lineNumber });
}

void Import::takeLateLines()
{
    for (LateLine& line : m_lateLines)
        line.orderNumber = orderNumber(line.key, m_lateCommon);
    std::sort(m_lateLines.begin(), m_lateLines.end(), [](const LateLine& a, const LateLine& b) {
        if (a.orderNumber != b.orderNumber)
            return a.orderNumber < b.orderNumber;
        const int order = a.key.compare(b.key);
        return order != 0 ? order < 0 : a.number < b.number;
    });
    auto place = m_lookup.values.begin();
    for (LateLine& line : m_lateLines)
        place = insert(place, std::move(line.key), std::move(line.value), line.number);
}

// Place of the record with that key.
Import::Place Import::insert(Place hint, QString key, QString value, int line)
{
    const std::size_t before = m_lookup.values.size();
    const auto place = m_lookup.values.emplace_hint(hint, std::move(key), nullptr);
    if (m_lookup.values.size() > before) {
        place->second = new TOxLookupValue { std::move(value) };
        if (m_isCounting)
            count(place->second->value);
    } else if (m_isChecking) {
        m_problems.push_back({ line, ProblemKind::DuplicateKey, place->first });
    }
    return place;
}

// Kept: a value that is there already keeps its counter as it is.
void Import::count(const QString& value)
{
    const auto [place, isNew] = m_frequencies.try_emplace(value, nullptr);
    if (isNew)
        place->second = new int(1);
}

template <typename Report> void Import::reportProblems(Report report)
{
    std::sort(m_problems.begin(), m_problems.end(), [](const Problem& a, const Problem& b) {
        return std::tie(a.line, a.kind) < std::tie(b.line, b.kind);
    });
    const int lastLine = m_lookup.lineNumber;
    for (const Problem& problem : m_problems) {
        m_lookup.lineNumber = problem.line;
        report(described(problem));
    }
    m_lookup.lineNumber = lastLine;
}

TOxLookupProblem Import::described(const Problem& problem) const
{
    if (problem.kind == ProblemKind::NoSeparator)
        return noSeparator(problem.line, m_lookup.separator);
    TOxLookupProblem result { problem.line, problem.kind, problem.key, QString(),
        m_firstKeyLength };
    result.text = lookupProblemText(result, problem.key);
    return result;
}

} // namespace

QString lookupProblemText(const TOxLookupProblem& problem, const QString& shownKey)
{
    switch (problem.kind) {
    case TOxLookupProblem::Kind::NoSeparator:
        break;
    case TOxLookupProblem::Kind::WrongKeySize:
        return catalogueText("OxLookup.importAVL.wrongKeySize",
            "Key [%1] has a different key size [%2] from the first record [%3]", shownKey,
            QString::number(problem.key.size()), QString::number(problem.firstKeySize));
    case TOxLookupProblem::Kind::DuplicateKey:
        return catalogueText(
            "OxLookup.importAVL.duplicateKey", "Key [%1] already exists", shownKey);
    }
    return problem.text;
}

TOxLookup::TOxLookup() = default;

TOxLookup::~TOxLookup() = default;

QString TOxLookup::getId() const
{
    return id;
}

void TOxLookup::setId(const QString& id)
{
    this->id = id;
}

QString TOxLookup::getLabel() const
{
    return label;
}

void TOxLookup::setLabel(const QString& label)
{
    this->label = label;
}

QString TOxLookup::getFfileName() const
{
    return fileName;
}

void TOxLookup::setFfileName(const QString& fileName)
{
    this->fileName = fileName;
}

int TOxLookup::getSeparator() const
{
    return separator;
}

void TOxLookup::setSeparator(const int& separator)
{
    this->separator = separator;
}

void TOxLookup::updateFileName(const QString& name)
{
    if (name.isEmpty() && !fileName.isEmpty()) {
        fileNameSet = true;
    } else if (UtilFiles::FileExists(name)) {
        fileName = name;
        fileNameSet = true;
    }
}

bool TOxLookup::openLookup()
{
    if (!UtilFiles::FileExists(fileName))
        return false;
    fileSize = QFile(fileName).size();
    position = 0;
    cancelled = false;
    return true;
}

bool TOxLookup::readLookup()
{
    line.clear();
    QFile file(fileName);
    if (!fileName.isEmpty() && file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream stream(&file);
        setUp(stream, m_codec);
        line = stream.readAll();
        line.remove(QLatin1Char('\n'));
    }
    if (cancelled)
        return false;
    ++lineNumber;
    position = line.size();
    return true;
}

void TOxLookup::splitKeyValueAVL(QStringList* messages)
{
    if (!splitLine(line, separator, key, value) && isChecking(consistency))
        report(noSeparator(lineNumber, separator), messages);
}

bool TOxLookup::importAVL(std::map<QString, int*>& frequencies, QStringList* messages)
{
    const bool isFound = openLookup();
    values.clear();
    lineNumber = 0;
    line.clear();
    if (!isFound) {
        errorText = catalogueText("Workspace.LoadDefinition.InputDataFile",
            "Input data file [%1] was not found", fileName);
        status = 1;
        return false;
    }
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return true;
    const bool isDone = importLines(file, frequencies, messages);
    if (file.error() == QFileDevice::NoError)
        return isDone;
    errorText = file.errorString();
    status = 1;
    return false;
}

bool TOxLookup::importData(
    const QByteArray& bytes, std::map<QString, int*>& frequencies, QStringList* messages)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly | QIODevice::Text);
    fileSize = bytes.size();
    position = 0;
    cancelled = false;
    values.clear();
    lineNumber = 0;
    line.clear();
    return importLines(buffer, frequencies, messages);
}

// Ends where the device fails, too; false when the host cancelled.
bool TOxLookup::importLines(
    QIODevice& device, std::map<QString, int*>& frequencies, QStringList* messages)
{
    QTextStream stream(&device);
    setUp(stream, m_codec);
    Import import(*this, frequencies);
    int percentage = 0;
    bool goesOn = true;
    while (goesOn && !stream.atEnd()) {
        const bool isRead = stream.readLineInto(&line);
        if (!isRead && !device.atEnd())
            break; // a failing device is never at its end
        ++lineNumber;
        position = line.size();
        import.takeLine();
        if (m_progress)
            goesOn = tellProgress(device.pos(), percentage);
    }
    import.takeLateLines();
    const auto reportTo = [&](const TOxLookupProblem& problem) { report(problem, messages); };
    import.reportProblems(reportTo);
    if (!goesOn)
        cancelled = true;
    return goesOn;
}

// What the progress function says to a new percentage, which is stored; true where it is not new.
bool TOxLookup::tellProgress(qint64 bytesRead, int& percentage) const
{
    const int current = fileSize > 0 ? static_cast<int>(bytesRead * 100 / fileSize) : 0;
    if (current == percentage)
        return true;
    percentage = current;
    return m_progress(bytesRead, fileSize);
}

void TOxLookup::report(const TOxLookupProblem& problem, QStringList* messages)
{
    MsgText = problem.text;
    issueErrorMessage(messages, problem.text);
    if (m_problemSink)
        m_problemSink(problem);
}

bool TOxLookup::consistencyCheck(
    econsistencyCheck mode, std::map<QString, int*>& frequencies, QStringList* messages)
{
    consistency = mode;
    return importAVL(frequencies, messages);
}

void TOxLookup::issueErrorMessage(QStringList* messages, const QString& text)
{
    ++errorCount;
    QString shown = text;
    if (errorCount > maxMessages && !limitNoticeIssued) {
        limitNoticeIssued = true;
        shown = catalogueText("System.Common.MaxMessages",
            "Too many error messages [%1], only the first [%2] will be shown",
            asCharacter(errorCount), asCharacter(maxMessages));
    }
    if (messages)
        messages->append(QString::number(lineNumber) + QLatin1Char('_') + shown);
}

void TOxLookup::setTextCodec(const QByteArray& name)
{
    m_codec = name;
}

void TOxLookup::setImportProgress(LookupProgress progress)
{
    m_progress = std::move(progress);
}

void TOxLookup::setProblemSink(LookupProblemSink sink)
{
    m_problemSink = std::move(sink);
}

QChar TOxLookup::separatorCharacter(int code)
{
    const bool isKnown = code >= 0 && code < static_cast<int>(std::size(separators));
    return QLatin1Char(separators[isKnown ? code : 0].character);
}

QStringList TOxLookup::separatorNames()
{
    QStringList names;
    for (const Separator& separator : separators)
        names.append(QLatin1String(separator.name));
    return names;
}
