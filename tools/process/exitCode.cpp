#include "tools/process/exitCode.h"

#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/signals.h"

#include <new>

namespace ravolt::tool {

int exitCodeOf(const std::function<int()> &job) {
    try {
        return job();
    } catch (const std::bad_alloc &) {
        sayError("out of memory");
    } catch (const Interrupted &end) {
        return 128 + end.signal();
    } catch (const WrongOptions &error) {
        sayError(error.what());
        return 2;
    } catch (const std::exception &error) {
        if (receivedSignal()) // which has cut short what failed
            return 128 + receivedSignal();
        sayError(error.what());
    }
    return 1;
}

} // namespace ravolt::tool
