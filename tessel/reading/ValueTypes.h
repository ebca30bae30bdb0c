#pragma once

#include "listing/Listing.h"

#include <model_Tessel/Constants.h>

/*! The type that the library calls \a name. */
inline ValueType valueTypeOf(const QString& name)
{
    if (name == TypeNameInteger)
        return ValueType::Integer;
    return name == TypeNameReal ? ValueType::Real : ValueType::String;
}
