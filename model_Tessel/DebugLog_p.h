#pragma once

#include <QDebug>
#include <QLoggingCategory>

// Streams one record to Qt's default category. While debug output of that category is off, nothing
// behind the macro is evaluated; plain qDebug() would build the text first and drop it then.
#define TESSEL_DEBUG                                                                               \
    for (bool enabled = QLoggingCategory::defaultCategory()->isDebugEnabled(); enabled;            \
         enabled = false)                                                                          \
    qDebug()
