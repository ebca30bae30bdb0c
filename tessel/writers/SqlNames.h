#pragma once

#include "writers/ExportText.h"

#include <QString>
#include <QStringList>

/*! \a name as SQL takes it: in double quotes when it is a reserved word or no plain identifier. */
QString sqlIdentifier(const QString& name);

/*! \a text as an SQL string. */
QString sqlText(const QString& text);

/*! \a text after "--", on one line. */
QString sqlComment(const QString& text);

/*! The names of one name space: the tables, or the columns of a table. */
class SqlNames {
public:
    /*! \param notes takes a sentence for each name that is quoted or is not the one wanted */
    explicit SqlNames(QStringList& notes)
        : m_notes(notes)
    {
    }

    /*!
     * A name of its own for what the dictionary calls \a wanted, which a sqlIdentifier() can be
     * made of. \a what names the thing in a note, for example "column SEX of table PERSON".
     */
    QString take(const QString& wanted, const QString& what);

private:
    QStringList& m_notes;
    UniqueNames m_taken;
};
