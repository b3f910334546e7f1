// The kit of an installed engine.
#include <ravolt.h>
#include <ravolt/kit.h>

int main() {
    RVSETTINGS settings;
    settings.setTitle("Installed kit");
    if (!RAVOLT::init(&settings))
        return 1;
    ravolt::kit::SmoothedValue value(0, 1);
    value.setTarget(1);
    value.advance(1);
    const bool smooth = value.getValue() > 0 && value.getValue() < 1;
    return RAVOLT::free() && smooth ? 0 : 2;
}
