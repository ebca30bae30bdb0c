#include <model_Tessel/QuestIndex.h>

TQuestIndex::TQuestIndex()
    : lines(new QStringList)
{
}

TQuestIndex::~TQuestIndex()
{
    delete lines;
}

int TQuestIndex::countLines() const
{
    return lines->size();
}

QString TQuestIndex::getRecordValue(int line) const
{
    return lines->value(line).mid(recordTypeStart, recordTypeLength);
}

int TQuestIndex::countRecords(const QString& type) const
{
    int count = 0;
    for (int line = 0; line < countLines(); ++line) {
        if (getRecordValue(line) == type)
            ++count;
    }
    return count;
}

QString TQuestIndex::getRecordString(const QString& type) const
{
    return getRecordString(type, 0);
}

QString TQuestIndex::getRecordString(const QString& type, int n) const
{
    int found = 0;
    for (int line = 0; line < countLines(); ++line) {
        if (getRecordValue(line) == type && found++ == n)
            return type;
    }
    return QLatin1String("");
}
