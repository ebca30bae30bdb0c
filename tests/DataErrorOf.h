#pragma once

#include <tessel_data/DataError.h>

#include <functional>

// File and text of the error that work throws; null when it throws none.
inline QString dataErrorOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const tessel::DataError& error) {
        return error.file + QLatin1String(": ") + error.text;
    }
    return QString();
}
