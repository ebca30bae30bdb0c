#pragma once

#include <model_Tessel/CSProBuilder_p.h>
#include <model_Tessel/CSProSection_p.h>

/*
 * Reads the sections of a dictionary in text form, one at a time, and hands what they say to the
 * builder. What lines mean is a matter of the reading.
 */
class CSProTextReader {
public:
    CSProTextReader(CSProModel& model, CSProBuilder& builder);
    virtual ~CSProTextReader();

    virtual void beginLoad();
    virtual void beginSection();
    // A line that is in no section.
    virtual void readOutside(int line, QStringView text);
    void readDictionary(const CSProSection& section);
    void readRecord(const CSProSection& section);
    void readItem(const CSProSection& section);
    void readValueSet(const CSProSection& section);
    // A value set that is passed over; it is only told of, with the name in its head.
    void ignoreValueSet(const CSProSection& head);
    // Any other section: the header's word in upper case decides.
    virtual void readOther(const QString& word, const QString& header, const CSProSection& section);

protected:
    using Kind = CSProProblem::Kind;
    using Values = CSProKeyFinder::Values;

    // What missing keys stand for.
    struct Defaults {
        int recordType; // its column and its width
        int maxRecords;
    };

    virtual Values find(const CSProKeyFinder& keys, const CSProSection& section) = 0;
    virtual Defaults defaults() const = 0;
    virtual QString recordTypeValue(const QString& text) const = 0;
    // A value that is not what its key asks for.
    virtual void reportValue(Kind kind, const Values& values, std::size_t key);
    // An item whose column is not told.
    virtual void reportMissingStart(const TCSProItem& item);
    // What else a section says than its keys.
    virtual void readMore(const Values& values);
    virtual void readMore(const Values& values, TCSProRecord& record);
    virtual void readMore(const Values& values, TCSProItem& item);
    // The name and the label of a value set and its values.
    virtual void fillValueSet(const CSProSection& section, TCSProValueSet& valueSet) = 0;

    // The keys of value sets, levels and whatever else has no more.
    enum NamedKey { NamedLabel, NamedName };
    static const CSProKeyFinder& namedKeys();
    static QString text(const Values& values, std::size_t key);

    CSProModel& m_model;
    CSProBuilder& m_builder;

private:
    Q_DISABLE_COPY(CSProTextReader)

    int number(const Values& values, std::size_t key, int defaultValue);
    bool isWord(const Values& values, std::size_t key, const QString& word, const char* otherWord);
};
