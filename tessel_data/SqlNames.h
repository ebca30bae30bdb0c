#pragma once

#include <tessel_data/SqlNotes.h>
#include <tessel_data/UniqueNames.h>

#include <QString>

namespace tessel {

/*! \a name as SQL takes it: in double quotes when it is a reserved word or no plain identifier. */
TESSEL_DATA_EXPORT QString sqlIdentifier(const QString& name);

/*! \a text as an SQL string. */
TESSEL_DATA_EXPORT QString sqlText(const QString& text);

/*! \a text after "--", on one line. */
TESSEL_DATA_EXPORT QString sqlComment(const QString& text);

/*! \a name, cut where an ending of a few characters would make it too long. */
TESSEL_DATA_EXPORT QString shortSqlName(const QString& name);

/*! The names of one name space: the tables, or the columns of a table. */
class TESSEL_DATA_EXPORT SqlNames {
public:
    /*! \param notes takes one for each name that is quoted or is not the one wanted */
    explicit SqlNames(SqlNotes& notes)
        : m_notes(notes)
    {
    }

    /*!
     * A name of its own for what the dictionary calls \a wanted, which a sqlIdentifier() can be
     * made of. \a thing is what a note tells of.
     */
    QString take(const QString& wanted, const SqlThing& thing = {});

private:
    void tell(
        SqlNote::Kind kind, const SqlThing& thing, const QString& name, SqlNote::Reason reason);

    SqlNotes& m_notes;
    UniqueNames m_taken;
};

} // namespace tessel
