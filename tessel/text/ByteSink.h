#pragma once

#include <QByteArray>

#include <functional>

/*! Takes a result in pieces, in order, so that it may be longer than a QByteArray can be. */
using ByteSink = std::function<void(const QByteArray&)>;
