#pragma once

#include <memory>
#include <string>

#include "algorithms/plan.h"

namespace gen {

// The forward plan of a real DFT length, in the notation of algorithms/plan.h.
std::string realForwardPlanText(int n);
// The inverse of a length is the transpose of a forward network: this is the
// plan of that network, whose passes the inverse runs in the opposite order.
std::string realInversePlanText(int n);

std::shared_ptr<Plan> realForwardPlan(int n);
std::shared_ptr<Plan> realInversePlan(int n);
// A forward plan in the notation, its Rader blocks resolved as in the real
// family.
std::shared_ptr<Plan> realPlan(const std::string& text);

}  // namespace gen
