#include <model_Tessel/Record.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/QuestIndex.h>

#include <QHash>
#include <QStringBuilder>

#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr int StatusSeveralUntyped = 4;
constexpr int StatusTypeEmpty = 6;

// The link to child among the children of parent; null when it is none of them.
TOxRecord** linkToChild(TOxRecord& parent, const TOxRecord* child)
{
    for (TOxRecord** link = &parent.firstChild; *link; link = &(*link)->nextBrother) {
        if (*link == child)
            return link;
    }
    return nullptr;
}

// Every line that a check finds adds the same text, so the lines are only counted: those of each
// type once, and those of a record once for every line that its parent found.
class QuestionnaireCheck {
public:
    explicit QuestionnaireCheck(const TQuestIndex& index)
        : m_text(index.recordText)
    {
        const int count = index.countLines();
        for (int line = 0; line < count; ++line)
            ++m_linesByType[index.getRecordValue(line)];
    }

    int linesOf(const TOxRecord& record) const
    {
        return record.keyRecord ? m_linesByType.value(record.keyRecord->recordType) : 0;
    }

    void addLines(qint64 lines)
    {
        m_lines += lines;
        if (m_lines > std::numeric_limits<int>::max() / (m_text.size() + TokenLineEnd.size()))
            throw std::bad_alloc();
    }

    // Adds what first, its next brothers and the records below them find, each so many times.
    void addTree(const TOxRecord* first, qint64 times)
    {
        std::vector<std::pair<const TOxRecord*, qint64>> pending;
        if (first && times > 0 && !m_text.isEmpty())
            pending.emplace_back(first, times);
        while (!pending.empty()) {
            const auto [record, timesAsked] = pending.back();
            pending.pop_back();
            if (record->nextBrother)
                pending.emplace_back(record->nextBrother, timesAsked);
            const qint64 lines = timesAsked * linesOf(*record);
            addLines(lines);
            if (record->firstChild && lines > 0)
                pending.emplace_back(record->firstChild, lines);
        }
    }

    QString result() const
    {
        if (m_text.isEmpty())
            return QLatin1String("");
        return QString(m_text % TokenLineEnd).repeated(static_cast<int>(m_lines));
    }

private:
    QString m_text;
    QHash<QString, int> m_linesByType;
    qint64 m_lines = 0;
};

} // namespace

TOxRecord::TOxRecord()
    : references(new QList<TOxRecordReference*>)
{
}

// Kept: children, brothers and the list of references stay alive for the hosts that hold them.
TOxRecord::~TOxRecord() = default;

QString TOxRecord::nodeCaption() const
{
    if (label.isEmpty())
        return name;
    return name % QLatin1String(" (") % label % QLatin1Char(')');
}

void TOxRecord::addBrother(TOxRecord* record)
{
    TOxRecord* last = this;
    while (last->nextBrother)
        last = last->nextBrother;
    last->nextBrother = record;
    record->parent = last->parent;
}

void TOxRecord::addChild(TOxRecord* record)
{
    if (firstChild) {
        firstChild->addBrother(record);
        return;
    }
    firstChild = record;
    record->parent = this;
}

void TOxRecord::insertChild(TOxRecord* before, TOxRecord* record)
{
    TOxRecord** link = linkToChild(*this, before);
    if (!link)
        return;
    record->parent = this;
    record->nextBrother = before;
    *link = record;
}

void TOxRecord::deleteChild(const QString& name, bool flag)
{
    Q_UNUSED(flag)
    TOxRecord* record = retrieveRecord(name);
    TOxRecord** link = linkToChild(*this, record);
    if (!link)
        return;
    *link = record->nextBrother;
    record->nextBrother = nullptr;
}

TOxRecord* TOxRecord::retrieveRecord(const QString& name)
{
    // Kept: only a search for "Common" looks for both spellings.
    const QString other = name == QLatin1String("Common") ? QStringLiteral("COMMON") : name;
    std::vector<TOxRecord*> pending = { this };
    while (!pending.empty()) {
        TOxRecord* record = pending.back();
        pending.pop_back();
        if (record->name == name || record->name == other)
            return record;
        if (record->nextBrother)
            pending.push_back(record->nextBrother);
        if (record->firstChild)
            pending.push_back(record->firstChild);
    }
    return nullptr;
}

TOxRecord* TOxRecord::preOrderNext() const
{
    if (firstChild)
        return firstChild;
    if (nextBrother)
        return nextBrother;
    return parent ? parent->preOrderNextBrother() : nullptr;
}

TOxRecord* TOxRecord::preOrderNextBrother() const
{
    for (const TOxRecord* record = this; record; record = record->parent) {
        if (record->nextBrother)
            return record->nextBrother;
    }
    return nullptr;
}

QString TOxRecord::getKeyValue(const QString& line) const
{
    Q_UNUSED(line)
    return QLatin1String("");
}

QString TOxRecord::getParentKeyValue(const QString& line) const
{
    Q_UNUSED(line)
    return QLatin1String("");
}

QString TOxRecord::assembleRecord(TQuestIndex* index) const
{
    if (!references->isEmpty() && index->countRecords(QString()) > 1)
        index->status = StatusSeveralUntyped;
    return QLatin1String("");
}

QString TOxRecord::assembleRecord(TQuestIndex* index, const QString& key) const
{
    Q_UNUSED(key)
    return index->recordText;
}

QString TOxRecord::checkQuestionnaire(TQuestIndex* index) const
{
    QuestionnaireCheck check(*index);
    const int lines = check.linesOf(*this);
    if (lines > 0 && keyRecord->recordType.isEmpty()) {
        index->status = StatusTypeEmpty;
        return QLatin1String("");
    }
    check.addLines(lines);
    check.addTree(firstChild, lines);
    return check.result();
}

QString TOxRecord::checkQuestionnaire(TQuestIndex* index, const QString& parentKey) const
{
    QuestionnaireCheck check(*index);
    if (parentKey.isEmpty()) // as the parent key of every line is
        check.addTree(this, 1);
    return check.result();
}

void TOxRecord::addRecordReferenceToList(TOxRecordReference* reference)
{
    references->append(reference);
}

void TOxRecord::removeRecordReferenceFromList(TOxRecordReference* reference)
{
    references->removeOne(reference);
}
