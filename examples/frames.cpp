// The 2D block in single calls: a text, a picture, and the times of the frames, which F shows and
// hides.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

namespace {

// Red from left to right, green upwards.
RVTEXTURE *makeGradient() {
    constexpr unsigned int size = 64;
    RVTEXTURE *texture = new RVTEXTURE();
    texture->create(size, size, RV_TEXTURE_RGB);
    for (unsigned int i = 0; i < size * size; ++i) {
        texture->getBitmap()[3 * i] = static_cast<unsigned char>(4 * (i % size));
        texture->getBitmap()[3 * i + 1] = static_cast<unsigned char>(4 * (i / size));
        texture->getBitmap()[3 * i + 2] = 96;
    }
    texture->update();
    return texture;
}

} // namespace

int main(int argc, char **argv) {
    Example example(argc, argv);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: frames");
    settings.setMaxAnisotropy(1);
    if (!RAVOLT::init(&settings))
        return 1;
    RVOPENGL::setBackgroundColor(0.1f, 0.12f, 0.16f, 1.0f);
    RVTEXTURE *gradient = makeGradient();
    ravolt::kit::FrameStatistics frames;
    ravolt::kit::Overlay overlay;
    frames.show(true);
    do {
        if (example.input.wasKeyPressed('f'))
            frames.show(!frames.isShown());
        frames.add(example.seconds());
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        overlay.setColor(1.0f, 1.0f, 1.0f);
        overlay.picture(gradient, 8, 72, 128, 128);
        overlay.text(150, 80, "A picture and a text,\nin one call each.");
        overlay.setColor(1.0f, 0.8f, 0.3f);
        frames.draw(overlay);
        RAVOLT::end2D();
        RAVOLT::swap();
    } while (example.next());
    RAVOLT::free();
    return 0;
}
