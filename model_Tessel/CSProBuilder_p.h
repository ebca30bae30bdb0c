#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QHash>

#include <memory>

// Types of the entries of a value set, as TValueSetItem has them.
namespace CSProSpecial {
enum Type : int { Ordinary = 0, Missing = 1, NotApplicable = 2, Refused = 3, Default = 4 };
}

/*
 * Puts what a reader found into the model of a TCSPro, as the reading rules say. Both forms of a
 * dictionary, text and JSON, are filled into the same objects and handed in here.
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

    // The format has at most as many columns in a record.
    static constexpr int MostOccurrenceLabels = 32'000;

    explicit CSProBuilder(TCSPro& dictionary);

    const CSProReadingRules& rules() const;

    void setNote(const QString& note);
    void addLanguage(const CSProLanguage& language);
    void addLevel(const CSProLevel& level);
    void addRelation(const CSProRelation& relation);
    void addRecord(std::unique_ptr<TCSProRecord> record);
    // Items that follow belong to the common record.
    void useCommonRecord();
    // One item, or all of its occurrences.
    void addItem(ItemPointer item);
    // For the item added last.
    void addValueSet(ValueSetPointer valueSet);
    // All value sets of the item added last are there; its occurrences get what they share.
    void finishItem();
    // A load, at whose end the problems stand in order of the lines.
    void beginLoad();
    void finishLoad();
    // A line before the first section of a load; the first one is told of.
    void noteOutside(int line, const QString& text);
    void beginSection();
    // True when the next value set would be ignored, so need not be read.
    bool ignoresValueSets() const;

    void note(Kind kind, int line, const QString& name, const QString& text = QString());
    void noteValueSet(
        Kind kind, int line, const QString& valueSet, const QString& text = QString());

private:
    void appendItem(TCSProItem* item);
    void appendOccurrences(const TCSProItem& item, int parents);
    TCSProItem* makeOccurrence(
        const TCSProItem& item, int ofParent, int number, bool isRepeatedWithParent) const;
    // True for a subitem whose item stands before it in the record.
    bool hasParent(const TCSProItem& item) const;
    bool acceptsCodes(TCSProValueSet& valueSet);
    void noteOddCodes(const TCSProValueSet& valueSet);
    bool settleDecimalCodes(TCSProValueSet& valueSet);
    static void convertCodes(TCSProValueSet& valueSet);
    void shareLinkedValues(TCSProValueSet& valueSet);
    bool attach(TCSProValueSet* valueSet);
    bool attachToOccurrences(TCSProValueSet* valueSet);
    void takeSpecialCodes(const TCSProValueSet& valueSet);
    void dropItem(const TCSProItem& item);

    TCSPro& m_dictionary;
    int m_groupStart = 0; // index of the first field of the item added last
    bool m_isFinished = true; // its occurrences share its value sets
    bool m_isOutside = false; // no section was begun and no line before it told of
    int m_firstProblem = 0; // of this load
    int m_fieldCount = 0; // that this load has made
    // The last item that is no subitem: its record, and its fields among all items.
    TCSProRecord* m_parentRecord = nullptr;
    int m_parentStart = 0;
    int m_parentCount = 0;
    QHash<QString, TCSProValueSet*> m_links; // first set with values of each link
};
