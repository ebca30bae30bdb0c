#pragma once

#include <QtGlobal>

/*!
 * \file tessel_data_global.h
 * TESSEL_DATA_EXPORT marks what the shared library exports while it is built, and what a program
 * imports when it uses it.
 */
#if defined(TESSEL_DATA_LIBRARY)
#define TESSEL_DATA_EXPORT Q_DECL_EXPORT /*!< marks what the library exports */
#else
#define TESSEL_DATA_EXPORT Q_DECL_IMPORT /*!< marks what the library exports */
#endif
