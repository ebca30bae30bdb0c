#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QString>
#include <QStringList>
#include <QVector>

namespace tessel {

/*! Something in a database that has a name, as the dictionary calls it. */
struct SqlThing {
    /*! What it is. */
    enum class Kind {
        Own, /*!< of the database itself; nobody is told of its name */
        Table,
        Part, /*!< of a table; its name is its number */
        ValueTable, /*!< of the value set that it is named for */
        Column,
        Index,
        KeyIndex, /*!< of a table; it has no name of its own */
        View
    };

    Kind kind = Kind::Own;
    QString name;
    QString owner; /*!< the table, of a value set the variable, that it belongs to */
};

/*! What a person is told of a table, or of a name that is not written as in the dictionary. */
struct SqlNote {
    /*! What is told of it. */
    enum class Kind { Renamed, Quoted, NoColumns, InParts };
    /*! Why it is not written as in the dictionary. */
    enum class Reason { None, NotAllowed, Taken, ReservedWord, OtherCharacters };

    Kind kind = Kind::Renamed;
    SqlThing thing;
    QString newName; /*!< in the database; of a table in parts that of the last part, if told */
    Reason reason = Reason::None; /*!< why a name is another one, or quoted */
    int columns = 0; /*!< of a table in parts */
    int parts = 0; /*!< of a table in parts; 0: not told */
    QStringList rowColumns; /*!< what tells which rows of a table in parts belong together */
};

using SqlNotes = QVector<SqlNote>;

/*! Why a name is another one, or quoted, as it stands in noteText(); null when there is no reason.
 */
TESSEL_DATA_EXPORT QString reasonText(SqlNote::Reason reason);

/*! \a note as a sentence without an end. */
TESSEL_DATA_EXPORT QString noteText(const SqlNote& note);

} // namespace tessel
