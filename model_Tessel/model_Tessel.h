#pragma once

#include <model_Tessel/model_Tessel_global.h>

/*! The library as one object; it holds nothing. */
class MODEL_TESSEL_EXPORT Model_Tessel {
public:
    Model_Tessel();
};
