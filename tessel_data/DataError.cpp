#include <tessel_data/DataError.h>

namespace tessel {

DataError::DataError(
    Code errorCode, const QString& fileName, const QString& message, const QStringList& parts)
    : code(errorCode)
    , file(fileName)
    , text(message)
    , items(parts)
    , m_what((QStringList { fileName + QStringLiteral(": ") + message } + parts)
                 .join(QLatin1String("\n  "))
                 .toUtf8())
{
}

const char* DataError::what() const noexcept
{
    return m_what.constData();
}

} // namespace tessel
