#include "tools/convert/morePictures.h"

namespace ravolt::tool {

Image decodeOther(const char *format, const unsigned char *, std::size_t, std::uint64_t,
                  std::string &reason) {
    reason = std::string("is in the format ") + format + ", which this build does not read";
    return {};
}

} // namespace ravolt::tool
