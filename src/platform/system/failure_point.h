// SPDX-License-Identifier: Zlib
// The one place through which every fallible operation of the platform layer passes, so that a test can make
// the n-th one fail, once or from then on. Costs one relaxed load where no test has planned a failure.
#pragma once

#include <cstdint>

namespace fenlight::platform {

enum class Operation : uint8_t { Memory, Bitmap, Context, File, Thread, Semaphore, Voice, Download };

// To be asked once at the start of each such operation; true: the operation must fail as if the system had
// refused.
[[nodiscard]] bool OperationFails(Operation operation) noexcept;

// For tests. Counting starts anew with each plan; the first operation after it is number 1.
void FailOnce(Operation operation, int number) noexcept;
void FailFrom(Operation operation, int number) noexcept;
void ForgetFailures() noexcept;
// Operations of that kind asked for since the last plan.
int CountOperations(Operation operation) noexcept;

}  // namespace fenlight::platform
