#pragma once

namespace ravolt::kit {

// A number that approaches its target exponentially: its distance from the target is divided by e
// in each 1/rate seconds. The motion is the exact solution, so it does not depend on the frame
// rate: ten steps of 0.01 s give the same value as one of 0.1 s, within rounding.
class SmoothedValue {
  public:
    // Begins at rest at `start`. `rate` is per second; 0 and less reach the target at once.
    explicit SmoothedValue(double start = 0, double rate = 10);

    // Per second; takes effect from the next `advance`.
    void setRate(double perSecond);
    double getRate() const { return rate; }

    // The value to approach, from the next `advance`.
    void setTarget(double number) { target = number; }
    double getTarget() const { return target; }

    // Sets value and target at once, without motion.
    void jump(double number) { value = target = number; }
    double getValue() const { return value; }

    // Moves on by so many seconds; 0 and less do nothing. Returns the integral of the value over
    // this time: what a point covers whose speed the value is.
    double advance(double seconds);

  private:
    double value, target;
    double rate;
};

} // namespace ravolt::kit
