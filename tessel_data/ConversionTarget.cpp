#include <tessel_data/ConversionTarget.h>

namespace tessel {

ConversionTarget::~ConversionTarget() = default;

} // namespace tessel
