// SPDX-License-Identifier: Zlib
#include "platform/system/failure_point.h"

#include <array>
#include <atomic>

namespace fenlight::platform {
namespace {

constexpr size_t kOperationCount = static_cast<size_t>(Operation::Download) + 1;

struct Plan {
    std::atomic<int> asked{0};
    std::atomic<int> firstFailure{0};  // 0: none planned
    std::atomic<bool> isLasting{false};
};

std::array<Plan, kOperationCount> plans;
std::atomic<bool> isAnythingPlanned{false};

Plan &PlanOf(Operation operation) { return plans[static_cast<size_t>(operation)]; }

void MakePlan(Operation operation, int number, bool isLasting) {
    Plan &plan = PlanOf(operation);
    plan.firstFailure = number;
    plan.isLasting = isLasting;
    plan.asked = 0;
    isAnythingPlanned = true;
}

}  // namespace

bool OperationFails(Operation operation) noexcept {
    if (!isAnythingPlanned.load(std::memory_order_relaxed)) [[likely]]
        return false;
    Plan &plan = PlanOf(operation);
    const int number = plan.asked.fetch_add(1) + 1;
    const int first = plan.firstFailure;
    if (first <= 0) return false;
    return plan.isLasting ? number >= first : number == first;
}

void FailOnce(Operation operation, int number) noexcept { MakePlan(operation, number, false); }
void FailFrom(Operation operation, int number) noexcept { MakePlan(operation, number, true); }

void ForgetFailures() noexcept {
    isAnythingPlanned = false;
    for (Plan &plan : plans) plan.firstFailure = 0;
}

int CountOperations(Operation operation) noexcept { return PlanOf(operation).asked; }

}  // namespace fenlight::platform
