#pragma once

#include <tessel_data/UniqueNames.h>

#include <QString>
#include <QStringList>
#include <QVector>

namespace tessel {

/*! Programs for statistics, whose rules for names and labels differ. */
enum class StatProgram { Stata, Spss, Sas, R };

/*! Why a name is not the one of the dictionary. */
enum class StatNameReason {
    NotAllowed, /*!< it is empty, or has characters that the program takes in no name */
    Beginning, /*!< names of the program do not begin so */
    ReservedWord,
    TooLong,
    Taken /*!< another name is the same, in SPSS and SAS also in other letter case */
};

/*! A name that a program takes. */
struct StatName {
    QString name;
    QVector<StatNameReason>
        reasons; /*!< why it is not the one wanted, in that order; empty: it is */

    /*! True when it is not the name wanted. */
    bool isChanged() const
    {
        return !reasons.isEmpty();
    }
};

/*! Hands out the names of one name space: the variables of a file, its value labels, the files. */
class TESSEL_DATA_EXPORT StatNames {
public:
    /*! Names as \a program takes them. */
    explicit StatNames(StatProgram program);

    /*!
     * A name of its own for what the dictionary calls \a wanted. Of a name that is too long the end
     * goes, but not the number of an occurrence, as in "_12". Another letter or "_" stands for what
     * the program does not take, and "v" before what it does not begin names with or has reserved.
     */
    StatName take(const QString& wanted);

private:
    StatProgram m_program;
    QStringList m_reservedWords;
    UniqueNames m_taken;
};

/*! The longest name, label or text that a program takes. */
struct StatLimit {
    int most = 0; /*!< 0: any */
    bool isInBytes = false; /*!< of UTF-8; else in characters */
};

/*! Longest name of a variable. */
TESSEL_DATA_EXPORT StatLimit statNameLimit(StatProgram program);
/*! Longest label of a variable, a record or a file. */
TESSEL_DATA_EXPORT StatLimit statLabelLimit(StatProgram program);
/*! Longest label of a value. */
TESSEL_DATA_EXPORT StatLimit statValueLabelLimit(StatProgram program);
/*! The beginning of \a text that \a limit lets pass, without half a character. */
TESSEL_DATA_EXPORT QString statText(const QString& text, StatLimit limit);

/*! "Stata", "SPSS", "SAS" or "R". */
TESSEL_DATA_EXPORT QString statProgramName(StatProgram program);
/*! \a reasons, as they follow "AGE is called AGE_2: ", for example "its name is taken". */
TESSEL_DATA_EXPORT QString reasonText(const QVector<StatNameReason>& reasons, StatProgram program);

} // namespace tessel
