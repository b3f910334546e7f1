// Conversions of single values.

#include "tools/inspect/values.h"

#include "tools/common/failure.h"

#include <cmath>

namespace ravolt::tool::inspect {

void readBytes(const Inspection &inspection, FileBytes &bytes) {
    if (bytes.read(inspection.file.c_str()) != FileBytes::Result::ok)
        throw Failure(inspection.file.string(), "cannot be read");
}

// The shortest text that gives the same float again, as a double.
Json number(float value) {
    if (!std::isfinite(value))
        return nullptr;
    char text[32];
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, static_cast<double>(value));
        if (std::strtof(text, nullptr) == value)
            break;
    }
    return std::strtod(text, nullptr);
}

Json vector(const Z3MVECTOR3D &value) {
    return Json::array({number(value.x), number(value.y), number(value.z)});
}

Json vector(const Z3MVECTOR4D &value) {
    return Json::array({number(value.x), number(value.y), number(value.z), number(value.w)});
}

bool isFinite(const Z3MVECTOR3D &value) {
    return std::isfinite(value.x) && std::isfinite(value.y) && std::isfinite(value.z);
}

bool isFinite(const Z3MVECTOR4D &value) {
    return std::isfinite(value.x) && std::isfinite(value.y) && std::isfinite(value.z) &&
           std::isfinite(value.w);
}

} // namespace ravolt::tool::inspect
