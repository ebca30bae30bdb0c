#pragma once

#include "listing/Listing.h"

#include <tessel_data/UniqueNames.h>

#include <QString>
#include <QVector>

/*! Fields that stand together: the identification items, those of a record, or all of a file. */
struct FieldGroup {
    const ListedRecord* record = nullptr; /*!< null: none */
    QVector<int> fields; /*!< indexes in the listing */
};

/*!
 * The identification items, if there are any, then a group for each record; one group for files
 * without records. Of records with the same name the first has the fields.
 */
QVector<FieldGroup> groupsOf(const Listing& listing);

/*! The identification items, by the levels that they stand in. */
class KeyFields {
public:
    explicit KeyFields(const Listing& listing);

    /*!
     * Indexes of those that are in the lines of \a record: of its level and of the levels above.
     */
    QVector<int> of(const ListedRecord& record) const;

private:
    struct Key {
        int field = 0;
        int level = 0;
    };

    QVector<Key> m_keys;
};

/*! The label of the dictionary, else its name, else the name of its file. */
QString titleOf(const Listing& listing);

/*! \a text with the characters that XML cannot hold made visible. */
inline QString xmlText(const QString& text)
{
    return tessel::visibleText(text);
}

using tessel::UniqueNames;
