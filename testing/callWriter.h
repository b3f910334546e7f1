#pragma once

// Turns the arguments of a function into the numbers of a Call.

#include "ravolt/testing/calls.h"

#include <cstdint>
#include <optional>
#include <type_traits>

namespace ravolt::test {

// How many elements the function reads from an array argument, given the numbers of the arguments
// before it; none when it is no short array (a bitmap, the data of a buffer).
std::optional<std::size_t> elementsRead(const std::string &name, const std::vector<double> &before);

inline double addressNumber(const void *address) {
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    return value < (std::uintptr_t(1) << 20) ? static_cast<double>(value) : anyAddress;
}

template <class Argument> void addArgument(Call &call, Argument argument) {
    if constexpr (std::is_arithmetic_v<Argument>) {
        call.arguments.push_back(static_cast<double>(argument));
    } else {
        using Element = std::remove_pointer_t<Argument>;
        using Plain = std::remove_const_t<Element>;
        if constexpr (std::is_same_v<Plain, char>) {
            if (argument)
                call.text += argument;
        } else if constexpr (std::is_same_v<Element, const char *>) {
            if (argument && *argument) // the sources of a shader: the first is enough
                call.text += *argument;
        } else if constexpr (!std::is_const_v<Element>) {
            // An output: nothing to read yet.
        } else if constexpr (std::is_arithmetic_v<Plain>) {
            const auto number = argument ? elementsRead(call.name, call.arguments) : std::nullopt;
            if (!number)
                call.arguments.push_back(addressNumber(argument));
            for (std::size_t index = 0; number && index < *number; ++index)
                call.arguments.push_back(static_cast<double>(argument[index]));
        } else {
            call.arguments.push_back(addressNumber(argument));
        }
    }
}

template <class... Arguments> Call writeCall(const char *name, Arguments... arguments) {
    Call call(name);
    (addArgument(call, arguments), ...);
    return call;
}

} // namespace ravolt::test
