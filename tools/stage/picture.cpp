#include "tools/stage/picture.h"

#include "tools/failure.h"

#include <algorithm>
#include <ravolt/RVOPENGL.h>
#include <ravolt/RVSETTINGS.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image_write.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace ravolt::tool {

Picture takePicture() {
    Picture picture;
    picture.width = RVSETTINGS::getSDLWindowX();
    picture.height = RVSETTINGS::getSDLWindowY();
    const std::size_t row = std::size_t(3) * static_cast<std::size_t>(picture.width);
    std::vector<unsigned char> upward(row * static_cast<std::size_t>(picture.height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, picture.width, picture.height, GL_RGB, GL_UNSIGNED_BYTE, upward.data());
    picture.pixels.reserve(upward.size());
    for (std::size_t end = upward.size(); end > 0; end -= row) // OpenGL's first row is the lowest
        picture.pixels.insert(picture.pixels.end(),
                              upward.begin() + static_cast<std::ptrdiff_t>(end - row),
                              upward.begin() + static_cast<std::ptrdiff_t>(end));
    return picture;
}

void writePng(const Picture &picture, const std::filesystem::path &file) {
    if (!stbi_write_png(file.c_str(), picture.width, picture.height, 3, picture.pixels.data(),
                        picture.width * 3))
        throw Failure(file.string(), "cannot be written");
}

} // namespace ravolt::tool
