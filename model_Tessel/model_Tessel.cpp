#include <model_Tessel/model_Tessel.h>

Model_Tessel::Model_Tessel() = default;
