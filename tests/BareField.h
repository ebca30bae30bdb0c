#pragma once

#include <model_Tessel/GenericField.h>

// A field with nothing but the three answers that the base demands.
class BareField : public TGenericField {
public:
    using TGenericField::TGenericField;

    bool isMissing() override
    {
        return false;
    }
    bool isNotApplicable() override
    {
        return false;
    }
    bool isBlank() override
    {
        return false;
    }
};
