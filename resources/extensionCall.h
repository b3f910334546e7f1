#pragma once

namespace ravolt {

// Calls an extension function, unless the driver has left it out; its result is 0 then.
template <auto &function, class... Arguments> auto call(Arguments... arguments) {
    using Result = decltype(function(arguments...));
    return function ? function(arguments...) : Result();
}

} // namespace ravolt
