#include <tessel_data/DataError.h>

namespace tessel {

DataError::DataError(Code errorCode, const QString& fileName, const QString& message)
    : code(errorCode)
    , file(fileName)
    , text(message)
    , m_what((fileName + QStringLiteral(": ") + message).toUtf8())
{
}

const char* DataError::what() const noexcept
{
    return m_what.constData();
}

} // namespace tessel
