#include "tests/support/realDriver.h"

#include "testing/recorderState.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace ravolt::test {

Extensions allOf(std::initializer_list<Extensions> lists) {
    Extensions all;
    for (const Extensions &list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

testing::AssertionResult driverHas(const Extensions &extensions) {
    const ScopedUnrecorded unrecorded; // the text of the driver itself
    const GLubyte *text = glGetString(GL_EXTENSIONS);
    const std::string list = text ? reinterpret_cast<const char *>(text) : "";
    for (const std::string &extension : extensions)
        if (list.find(extension) == std::string::npos)
            return testing::AssertionFailure() << "the driver lacks " << extension;
    return testing::AssertionSuccess();
}

int samplesOfDriver() {
    const ScopedUnrecorded unrecorded;
    GLint samples = 0;
    glGetIntegerv(GL_MAX_SAMPLES_EXT, &samples);
    return samples;
}

} // namespace ravolt::test
