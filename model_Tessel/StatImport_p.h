#pragma once

#include <model_Tessel/StatParser_p.h>
#include <model_Tessel/StatValueLabel.h>

#include <QString>

#include <readstat.h>

#include <map>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class TGenericField;

// In what the importers of SPSS and Stata files differ while they read.
struct StatRules {
    const char* unit; // named when a value label has an unsupported type
    int line;
    StatParse parse;
    // Decodes a label of a variable or of a value.
    void (*appendLabel)(QString& text, const char* label, int size);
    int (*length)(const readstat_variable_t& variable);
    // Floating variables without decimals are integers, and turn their labels into whole numbers.
    bool wholeWithoutDecimals;
    bool boundsForStrings; // strings have the default minimum and maximum too
};

// The labels of a set as its fields show them, and the range of their numbers.
struct StatLabelSummary {
    QString text;
    double minimum = 999999999.0;
    double maximum = -999999999.0;
    bool hasMinimum = false;
    bool hasMaximum = false;
    bool isWhole = false; // made after the set's labels were turned into whole numbers
};

// What is remembered during a read, when nobody else changes the label sets.
struct StatImportMemory {
    using Labels = std::vector<TStatValueLabel*>;

    std::string setName;
    Labels* labels = nullptr; // of setName; null: not looked up yet
    std::unordered_map<const Labels*, StatLabelSummary> summaries;
};

/*
 * What both importers do with a file, its value labels and its variables.
 *
 * The label sets are the importer's. The records in them are made here and live until the next
 * read or the end of this object; records that others put into the sets are left alone.
 */
class StatImport {
public:
    using Labels = StatImportMemory::Labels;
    using LabelSets = std::map<std::string, Labels>;

    StatImport(const StatRules& rules, LabelSets& labelSets);
    ~StatImport();

    // Empties the label sets and reads the file twice, as fields need the labels of the whole file.
    // The callbacks get importer as their context. Returns the result of the second pass.
    readstat_error_t read(const QString& fileName, void* importer,
        readstat_value_label_handler onValueLabel, readstat_variable_handler onVariable);

    // Makes read() read from input, which has to live as long; null: from the file that is named.
    void setInput(TStatInput* input)
    {
        m_input = input;
    }

    // For importers that report what fails.
    void setQuiet(bool isQuiet)
    {
        m_isQuiet = isQuiet;
    }

    bool isQuiet() const
    {
        return m_isQuiet;
    }

    void addLabel(const char* setName, const readstat_value_t& value, const char* label);
    void describe(TGenericField& field, const readstat_variable_t& variable, const char* setName);

    // Runs one step of a callback; what it throws is thrown again by read().
    template <typename Step> int guarded(Step step) noexcept
    {
        return m_guard.run(step);
    }

private:
    Q_DISABLE_COPY(StatImport)

    readstat_error_t parse(const QByteArray& path, void* importer,
        readstat_value_label_handler onValueLabel, readstat_variable_handler onVariable);
    std::string_view nameOf(const char* setName) const;
    Labels& setToFill(std::string_view setName);
    Labels* findSet(std::string_view setName);
    char* copied(const char* text, std::size_t size);
    void storeValue(TStatValueLabel& record, const readstat_value_t& value);
    StatLabelSummary summaryOf(Labels& labels, bool isWhole);
    StatLabelSummary newSummary(Labels& labels, bool isWhole) const;

    const StatRules& m_rules;
    LabelSets& m_labelSets;
    std::pmr::monotonic_buffer_resource m_records; // the records of the label sets and their texts
    std::optional<StatImportMemory> m_memory; // only while a file is read
    TStatInput* m_input = nullptr;
    const TStatInput* m_parsed = nullptr; // what a parser reads from, while it does
    CallbackGuard m_guard;
    bool m_isQuiet = false;
};
