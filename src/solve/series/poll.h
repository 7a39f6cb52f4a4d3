#pragma once

#include <functional>

namespace varno::solve {

/// Called again and again inside of long computations, many times a second however many digits they
/// have; throws to end them.
using Poll = std::function<void()>;

/// So many products may pass between two calls: some milliseconds at 10,000 digits, and so much
/// work at 15 that the call costs nothing beside it.
inline constexpr int kProductsPerPoll = 256;

}  // namespace varno::solve
