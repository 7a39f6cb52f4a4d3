#pragma once

#include <string>
#include <string_view>

#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Collects text instead of writing it.
class HeldText final : public TextSink {
 public:
  void Write(std::string_view addition) override { text += addition; }
  std::string text;
};

}  // namespace varno::solve
