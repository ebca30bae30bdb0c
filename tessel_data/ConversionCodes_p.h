#pragma once

#include <tessel_data/ConversionLimits_p.h>

#include <QHash>

namespace tessel {

/* Gives the columns of a plan their labels and missing values. */
class ConversionCodes {
public:
    ConversionCodes(
        const DataDictionary& dictionary, const ConversionOptions& options, ConversionPlan& plan);

    /* Fills what concerns codes in column, which has its name, type and unit. */
    void fill(ConversionColumn& column, const QString& file);

private:
    // A code of a value set, or a range.
    struct Code {
        double low = 0; // as the file counts
        double high = 0;
        QString text; // of texts the code, else as it is shown
        QString label;
        Special special = Special::None;
        int entry = 0; // its place in the value set
        char tag = '\0'; // a kind of missing values in the source
    };
    // Those of one variable, in the order of the dictionary.
    struct Codes {
        QString name;
        std::vector<Code> labelled;
        std::vector<Code> missing; // points go before ranges that they are in
        QString blankLabel;
        int repeatedKinds = 0; // labels of kinds that have one already
        bool isText = false;
    };

    Codes codesOf(const ConversionColumn& column) const;
    void addLabelled(Codes& codes, const ConversionColumn& column, int set) const;
    void addKinds(Codes& codes, const DataValueSet& source) const;
    void addMissing(Codes& codes, const ConversionColumn& column) const;
    void setTags(const Codes& codes, ConversionColumn& column);
    ConversionMissing longestRun(const Codes& codes, const ConversionColumn& column) const;
    void setMissing(const Codes& codes, ConversionColumn& column);
    void tellUnmarked(const std::vector<Code>& left, const Codes& codes,
        const ConversionColumn& column, ConversionNote::Reason reason);
    void widen(const Codes& codes, ConversionColumn& column) const;
    void setMissingTexts(const Codes& codes, ConversionColumn& column);
    void setKinds(const Codes& codes, ConversionColumn& column);
    void tellSets(const Codes& codes, const ConversionColumn& column);
    int labelSet(const Codes& codes, const ConversionColumn& column);
    void addLabel(ConversionLabelSet& set, const ConversionLabel& label, ConversionColumn column);
    bool isHeld(const Code& code, bool isText, ConversionNote::Reason& reason) const;
    std::vector<ConversionLabel> labelsOf(const Codes& codes, const ConversionColumn& column);
    ConversionNote& tell(ConversionNote::Kind kind, const ConversionColumn& column,
        const QString& text = QString(),
        ConversionNote::Reason reason = ConversionNote::Reason::None);

    bool isStata() const
    {
        return m_options.format == ConversionFormat::Stata;
    }

    const DataDictionary& m_dictionary;
    const ConversionOptions& m_options;
    ConversionPlan& m_plan;
    QString m_file;
    StatNames m_setNames;
    QHash<QString, int> m_sets; // label sets by what is in them
};

} // namespace tessel
