#pragma once

#include <model_Tessel/CSProModel.h>
#include <model_Tessel/CSProValueSet.h>

#include <memory>

// Types of the entries of a value set, as TValueSetItem has them.
namespace CSProSpecial {
enum Type : int { Ordinary = 0, Missing = 1, NotApplicable = 2, Refused = 3, Default = 4 };
}

/*
 * Puts what a reader found into a model, in the way of one reading. Both forms of a dictionary,
 * text and JSON, are filled into the same objects and handed in here.
 */
class CSProBuilder {
public:
    using Kind = CSProProblem::Kind;

    // Objects that were not handed out go with what they hold; others belong to the hosts.
    struct DropItem {
        void operator()(TCSProItem* item) const;
    };
    struct DropValueSet {
        void operator()(TCSProValueSet* valueSet) const;
    };
    using ItemPointer = std::unique_ptr<TCSProItem, DropItem>;
    using ValueSetPointer = std::unique_ptr<TCSProValueSet, DropValueSet>;

    CSProBuilder(CSProModel& model, CSProFindings& findings);
    virtual ~CSProBuilder();

    void setNote(const QString& note);
    // Its place among the languages, from 0.
    int addLanguage(const CSProLanguage& language);
    void addLevel(const CSProLevel& level);
    void addRelation(const CSProRelation& relation);
    void addRecord(std::unique_ptr<TCSProRecord> record);
    // One item, or all of its occurrences.
    void addItem(ItemPointer item);
    // For the item added last.
    virtual void addValueSet(ValueSetPointer valueSet) = 0;
    // True when the next value set would be ignored, so need not be read.
    virtual bool ignoresValueSets() const = 0;
    // All value sets of the item added last are there; its occurrences get what they share.
    virtual void finishItem();
    // A load, at whose end the problems stand in order of the lines.
    void beginLoad();
    void finishLoad();

    void report(Kind kind, int line, const QString& name, const QString& text = QString());
    void reportValueSet(
        Kind kind, int line, const QString& valueSet, const QString& text = QString());

protected:
    // An item with one occurrence at least.
    virtual void placeItem(ItemPointer item) = 0;
    virtual void passOverItem(const TCSProItem& item);

    // Ends the load when it would make too many fields.
    void countFields(const TCSProItem& item, qint64 count);
    void appendItem(TCSProItem* item);
    // What occurrences have of their item under either reading, placed at a column.
    static TCSProItem* copyOf(const TCSProItem& item, qint64 start);

    CSProModel& m_model;
    CSProFindings& m_findings;

private:
    Q_DISABLE_COPY(CSProBuilder)

    int m_firstProblem = 0; // of this load
    int m_fieldCount = 0; // that this load has made
};
