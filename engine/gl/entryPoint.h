#pragma once

// The extension functions that a driver may leave out even though it lists their extension. A call
// that does nothing without its function is made by these functions. Code that needs several
// functions together checks their pointers first.

namespace ravolt {

// Calls an extension function. When the driver has left it out, the result is 0.
template <auto &function, class... Arguments> auto callIfPresent(Arguments... arguments) {
    using Result = decltype(function(arguments...));
    return function ? function(arguments...) : Result();
}

} // namespace ravolt
