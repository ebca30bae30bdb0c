#pragma once

#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>

#include <QStringList>

#include <deque>

// Declared only by the library; here it is anything that has an address.
class TOxRecordReference { };

// Owns records, whose tree is linked here without the walks of addChild() and addBrother().
class Tree {
public:
    Tree() = default;
    ~Tree()
    {
        for (const TOxRecord& record : m_records)
            delete record.references;
    }

    TOxRecord& add(const QString& name = QString())
    {
        m_records.emplace_back();
        m_records.back().name = name;
        return m_records.back();
    }
    // The first child of parent.
    TOxRecord& addFirst(TOxRecord& parent, const QString& name = QString())
    {
        TOxRecord& record = add(name);
        record.parent = &parent;
        record.nextBrother = parent.firstChild;
        parent.firstChild = &record;
        return record;
    }
    // The brother next to record.
    TOxRecord& addNext(TOxRecord& brother, const QString& name = QString())
    {
        TOxRecord& record = add(name);
        record.parent = brother.parent;
        record.nextBrother = brother.nextBrother;
        brother.nextBrother = &record;
        return record;
    }

    TOxRecord& root()
    {
        return m_records.front();
    }
    std::deque<TOxRecord>& records()
    {
        return m_records;
    }

private:
    Q_DISABLE_COPY(Tree)

    std::deque<TOxRecord> m_records;
};

// An index of lines whose type is their first character.
class Index : public TQuestIndex {
public:
    explicit Index(const QStringList& questionnaire = QStringList(), const QString& text = "text")
    {
        recordTypeLength = 1;
        status = Untouched;
        recordText = text;
        *lines = questionnaire;
    }

    static constexpr int Untouched = 99;
};

inline QString copies(int count, const QString& text = "text")
{
    return QString(text + "\r\n").repeated(count);
}
