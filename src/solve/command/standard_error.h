#pragma once

#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Standard error. What cannot be written there is dropped: nobody could be told.
class StandardError final : public TextSink {
 public:
  void Write(std::string_view text) override;
};

}  // namespace varno::solve
