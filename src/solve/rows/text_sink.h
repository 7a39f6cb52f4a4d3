#pragma once

#include <string_view>

namespace varno::solve {

/// Where text goes. What cannot be written is an exception, thrown by the call that loses it.
class TextSink {
 public:
  virtual ~TextSink() = default;
  virtual void Write(std::string_view text) = 0;
};

}  // namespace varno::solve
