#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QHash>
#include <QString>

namespace tessel {

/*! \a text with the characters that neither XML nor a name can hold made visible. */
TESSEL_DATA_EXPORT QString visibleText(const QString& text);

/*! Hands out names that differ, unless told otherwise in more than upper and lower case. */
class TESSEL_DATA_EXPORT UniqueNames {
public:
    /*! Names that \a differ says are two. */
    explicit UniqueNames(Qt::CaseSensitivity differ = Qt::CaseInsensitive)
        : m_differ(differ)
    {
    }

    /*! \a wanted, or when that is taken, \a wanted followed by "_2", "_3" and so on. */
    QString take(const QString& wanted);

private:
    QString keyOf(const QString& name) const;

    Qt::CaseSensitivity m_differ;
    QHash<QString, int> m_lastNumbers; // of the keys of the names taken
};

} // namespace tessel
