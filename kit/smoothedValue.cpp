#include "ravolt/kit/smoothedValue.h"

#include <cmath>

namespace ravolt::kit {

SmoothedValue::SmoothedValue(double start, double perSecond) : value(start), target(start) {
    setRate(perSecond);
}

void SmoothedValue::setRate(double perSecond) { rate = perSecond > 0 ? perSecond : 0; }

double SmoothedValue::advance(double seconds) {
    if (!(seconds > 0))
        return 0;
    const double distance = target - value;
    if (rate == 0) {
        value = target;
        return target * seconds;
    }
    const double covered = -std::expm1(-rate * seconds); // the part of the distance, 0 to 1
    value += distance * covered;
    return target * seconds - distance * covered / rate;
}

} // namespace ravolt::kit
