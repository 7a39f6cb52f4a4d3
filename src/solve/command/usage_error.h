#pragma once

#include <stdexcept>

namespace varno::solve {

/// A command line that is wrong. what() says which argument, what was wrong and what would be
/// right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace varno::solve
