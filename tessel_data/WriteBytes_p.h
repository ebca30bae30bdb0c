#pragma once

#include <QString>

#include <cstddef>

namespace tessel {

/* Writes all bytes, however often it is interrupted; path is told in the DataError. */
void writeBytes(int descriptor, const char* bytes, std::size_t size, const QString& path);

} // namespace tessel
