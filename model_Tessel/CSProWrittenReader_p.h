#pragma once

#include <model_Tessel/CSProTextReader_p.h>

#include <initializer_list>

/*
 * Reads what the lines say: whole keys, every section, notes and labels of occurrences, and what is
 * odd about them.
 */
class CSProWrittenReader final : public CSProTextReader {
public:
    using CSProTextReader::CSProTextReader;

    void beginLoad() override;
    void beginSection() override;
    void readOutside(int line, QStringView text) override;
    void readOther(
        const QString& word, const QString& header, const CSProSection& section) override;

protected:
    Values find(const CSProKeyFinder& keys, const CSProSection& section) override;
    Defaults defaults() const override;
    QString recordTypeValue(const QString& text) const override;
    void reportValue(Kind kind, const Values& values, std::size_t key) override;
    void reportMissingStart(const TCSProItem& item) override;
    void readMore(const Values& values) override;
    void readMore(const Values& values, TCSProRecord& record) override;
    void readMore(const Values& values, TCSProItem& item) override;
    void fillValueSet(const CSProSection& section, TCSProValueSet& valueSet) override;

private:
    Values find(const CSProKeyFinder& keys, const CSProSection& section, std::size_t count);
    void reportOther(const CSProKeyLine& line, std::initializer_list<const char*> passedOver);
    bool takeNote(const CSProKeyLine& line, QString& note) const;
    bool takeOccurrenceLabel(
        const CSProKeyLine& line, int occurrences, QVector<QString>& labels) const;
    void readLevel(const CSProSection& section);
    void readLanguages(const CSProSection& section);
    void readRelation(const CSProSection& section);

    bool m_hasBegun = false; // with a section, or with a line that was told of
};

// Adds a line of a note, in which "\r\n" is written for a line break and "~" for a leading blank.
void appendNoteLine(QString& note, QStringView line);

// Fills a value set from the lines of its section that stand behind its head.
void readWrittenValues(const CSProSection& section, std::size_t first, CSProBuilder& builder,
    TCSProValueSet& valueSet);

// Type of the special value that a word stands for; Ordinary for any other word.
CSProSpecial::Type csproSpecialType(QStringView word);
