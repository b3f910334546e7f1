// Ten lines: a window, a box, one frame.
#include <ravolt.h>

int main() {
    RVSETTINGS settings;
    settings.setTitle("Installed");
    if (!RAVOLT::init(&settings))
        return 1;
    RVNODE *helper = new RVHELPER;
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    helper->pass(true);
    RAVOLT::end3D(true);
    RAVOLT::swap();
    return RAVOLT::free() ? 0 : 2;
}
