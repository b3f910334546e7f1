#pragma once

// What a test needs of the real driver, whatever the recorder simulates. A test whose driver lacks
// an extension is skipped, with the name of the extension: the engine without it is tested by the
// recorder, which hides extensions. scripts/drivers.sh runs the tests on such drivers.

#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

using Extensions = std::vector<std::string>;

inline const Extensions vertexBufferExtensions = {"GL_ARB_vertex_buffer_object"};
inline const Extensions programExtensions = {"GL_ARB_vertex_shader", "GL_ARB_fragment_shader"};
// Of render targets, with what the engine detects before them.
inline const Extensions targetExtensions = {"GL_ARB_texture_non_power_of_two",
                                            "GL_ARB_texture_float", "GL_EXT_framebuffer_object"};
inline const Extensions multitextureExtensions = {"GL_ARB_multitexture"};
// The reference pictures of filtered textures are drawn with it.
inline const Extensions anisotropyExtensions = {"GL_EXT_texture_filter_anisotropic"};

// Those of several lists.
Extensions allOf(std::initializer_list<Extensions> lists);

// All that the engine detects.
inline const Extensions allExtensions =
    allOf({{"GL_EXT_texture_filter_anisotropic", "GL_ARB_multitexture", "GL_ARB_depth_texture",
            "GL_ARB_shadow", "GL_ARB_occlusion_query"},
           vertexBufferExtensions,
           programExtensions,
           targetExtensions});

// Whether the driver of the current context has them; the failure names the first that is missing.
testing::AssertionResult driverHas(const Extensions &extensions);

// The most samples of a pixel that the driver of the current context has, or 0.
int samplesOfDriver();

} // namespace ravolt::test

// Within a test, or in SetUp() after that of the base: skips the test on a driver without these
// extensions. A SetUp() that has something to do after such a one returns where IsSkipped().
#define SKIP_WITHOUT_EXTENSIONS(extensions)                                                        \
    if (const testing::AssertionResult found = ravolt::test::driverHas(extensions); found)         \
        ;                                                                                          \
    else                                                                                           \
        GTEST_SKIP() << found.message()

// In the same places: skips the test on a driver with fewer samples of a pixel.
#define SKIP_WITHOUT_SAMPLES(number)                                                               \
    if (const int samples = ravolt::test::samplesOfDriver(); samples >= (number))                  \
        ;                                                                                          \
    else                                                                                           \
        GTEST_SKIP() << "the driver has " << samples << " samples of a pixel"
