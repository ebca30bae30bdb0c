#pragma once

#include <QtGlobal>

/*!
 * \file model_Tessel_global.h
 * MODEL_TESSEL_EXPORT marks what the shared library exports while it is built,
 * and what a program imports when it uses it.
 */
#if defined(MODEL_TESSEL_LIBRARY)
#define MODEL_TESSEL_EXPORT Q_DECL_EXPORT /*!< marks what the library exports */
#else
#define MODEL_TESSEL_EXPORT Q_DECL_IMPORT /*!< marks what the library exports */
#endif
