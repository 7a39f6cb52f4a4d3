#pragma once

#include <functional>
#include <string>

namespace varno {

/// How a child process ended and what it wrote.
struct ChildOutcome {
  int exitStatus = -1;  ///< -1 when a signal ended it
  int signal = 0;       ///< 0 when it exited
  std::string out;
  std::string err;
};

/// The exit status of a child whose body returned.
inline constexpr int kBodyReturned = 42;

/// Runs `body` in a copy of this process that reads `input` from its standard input through a pipe.
ChildOutcome RunInChild(const std::function<void()>& body, const std::string& input = "");

}  // namespace varno
