#pragma once

#include <model_Tessel/CSPro.h>

#include <QString>
#include <QStringList>

// Texts of dictionaries, and the numbers that the library keeps in them as characters.

inline QString character(int code)
{
    return QString(QChar(static_cast<ushort>(code)));
}

inline void parse(TCSPro& parser, const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    parser.loadFromStr(&lines);
}
