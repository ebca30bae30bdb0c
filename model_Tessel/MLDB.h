#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>

/*!
 * Text of a user-visible message: \a defaultText with "%1" to "%6" filled, in that order.
 *
 * An empty argument removes its placeholder. Filling goes on over the growing text, so a value
 * that itself holds "%2" has it filled by the second argument, and "%10" is "%1" and a 0.
 *
 * \param key dotted path that names the message for a translation layer; not consulted here
 */
MODEL_TESSEL_EXPORT QString MLDBGetMessage(const QString& key, const QString& defaultText,
    const QString& arg1, const QString& arg2, const QString& arg3, const QString& arg4,
    const QString& arg5, const QString& arg6);

/*! Help page of \a key: always a null string, there is no help-page store. */
MODEL_TESSEL_EXPORT QString MLDBGetHelpPage(const QString& key, const QString& defaultPage);
