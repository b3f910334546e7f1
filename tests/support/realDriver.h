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

} // namespace ravolt::test

// Within a test, or in SetUp() after that of the base: skips the test on a driver without these
// extensions. A SetUp() that has something to do after such a one returns where IsSkipped().
#define SKIP_WITHOUT_EXTENSIONS(extensions)                                                        \
    if (const testing::AssertionResult found = ravolt::test::driverHas(extensions); found)         \
        ;                                                                                          \
    else                                                                                           \
        GTEST_SKIP() << found.message()
