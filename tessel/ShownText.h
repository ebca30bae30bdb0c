#pragma once

#include <QString>

/*! How numbers and codes are shown to people, in every table. */

/*! "1 field", "2 fields"; \a several where an "s" does not make the plural. */
QString plural(qint64 count, const QString& one, const QString& several = QString());

/*! \a code, in quotes where blanks in it, or nothing at all, would not be seen. */
QString shownCode(const QString& code);

/*! \a number in digits; empty for 0, which stands for none. */
QString shownNumber(int number);
