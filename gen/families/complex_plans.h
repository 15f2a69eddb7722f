#pragma once

#include <memory>
#include <string>

#include "algorithms/transform.h"

namespace gen {

enum class ComplexType { C32, C64 };

// The plan notation of length n for the element type, and its parsed tree.
std::string planText(int n, ComplexType type);
std::shared_ptr<Plan> planFor(int n, ComplexType type);

}  // namespace gen
