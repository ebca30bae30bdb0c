#pragma once

#include <model_Tessel/CSProBuilder_p.h>
#include <model_Tessel/CSProSection_p.h>

/*
 * Reads the sections of a dictionary in text form, one at a time, and hands what they say to the
 * builder.
 */
class CSProTextReader {
public:
    CSProTextReader(TCSPro& dictionary, CSProBuilder& builder);

    void readDictionary(const CSProSection& section);
    void readRecord(const CSProSection& section);
    void readItem(const CSProSection& section);
    void readValueSet(const CSProSection& section);
    // A value set that the rules pass over; it is only told of, with the name in its head.
    void ignoreValueSet(const CSProSection& head);
    // Any other section: the header's word in upper case decides.
    void readOther(const QString& word, const QString& header, const CSProSection& section);

private:
    using Kind = CSProProblem::Kind;
    using Values = CSProKeyFinder::Values;

    Values find(const CSProKeyFinder& keys, const CSProSection& section, std::size_t count);
    Values find(const CSProKeyFinder& keys, const CSProSection& section);
    QString text(const Values& values, std::size_t key) const;
    int number(const Values& values, std::size_t key, int defaultValue);
    bool isWord(const Values& values, std::size_t key, const QString& word, const char* otherWord);
    void noteValue(Kind kind, const Values& values, std::size_t key);
    void noteOther(const CSProKeyLine& line, std::initializer_list<const char*> passedOver);
    bool takeNote(const CSProKeyLine& line, QString& note) const;
    bool takeOccurrenceLabel(
        const CSProKeyLine& line, int occurrences, QVector<QString>& labels) const;
    QString recordTypeValue(const QString& text) const;
    bool isValueLine(QStringView line) const;

    void readLevel(const CSProSection& section);
    void readLanguages(const CSProSection& section);
    void readRelation(const CSProSection& section);
    void readValues(const CSProSection& section, std::size_t first, TCSProValueSet& valueSet);

    TCSPro& m_dictionary;
    CSProBuilder& m_builder;
};

// Adds a line of a note, in which "\r\n" is written for a line break and "~" for a leading blank.
void appendNoteLine(QString& note, QStringView line);

/*
 * Readers of the value lines of one section, from line first on. The established one is in
 * CSProValueLines.cpp beside the one that reads values as they are written.
 */
void readEstablishedValues(TCSPro& dictionary, CSProBuilder& builder, const CSProSection& section,
    TCSProValueSet& valueSet);
void readWrittenValues(TCSPro& dictionary, CSProBuilder& builder, const CSProSection& section,
    std::size_t first, TCSProValueSet& valueSet);
// True for a line that begins with the key "Value" and its "=", without blanks between them.
bool isCSProValueLine(QStringView line);
// Type of the special value that a word stands for; Ordinary for any other word.
int csproSpecialType(QStringView word);
