#pragma once

#include <model_Tessel/ErrorManager.h>

#include <functional>
#include <memory>

using ErrorPointer = std::unique_ptr<OxErrorManager>;

// The error object that an operation throws; null when it throws none.
inline ErrorPointer errorOf(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (OxErrorManager* error) {
        return ErrorPointer(error);
    }
    return nullptr;
}
