#pragma once

// Several jobs at the same time. Each runs in a process of its own, as some of what they use is
// there once in a process (limits, signals, the messages' prefix), and none can harm another one.

#include <cstddef>
#include <functional>

namespace ravolt::tool {

// Runs `job(index, awaitTurn)` for the indices below `number`, up to `atOnce` at a time, and prints
// what they print in the order of their indices. A job that has called `awaitTurn` goes on when all
// jobs before it have ended, so that what it does then happens in this order too. Its result
// and errors are those of exitCodeOf. Returns how many have not ended with 0. A signal to this
// process ends all of them and throws Interrupted. Call it before the engine starts.
std::size_t runInProcesses(
    std::size_t number, std::size_t atOnce,
    const std::function<int(std::size_t index, const std::function<void()> &awaitTurn)> &job);

} // namespace ravolt::tool
