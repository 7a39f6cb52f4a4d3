#pragma once

#include <string>
#include <vector>

#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Events alone as comma-separated values, with their names in the first column: `event,t,x,v`, or
/// in the first one behind the leading fields. Rows are left out.
class EventsWriter final : public RowWriter {
 public:
  EventsWriter(TextSink& sink, std::vector<std::string> columns, LeadingFields leading = {});
  void Begin() override;
  void Write(std::string_view, std::span<const std::string_view>) override {}
  void WriteEvent(std::string_view name, std::string_view time,
                  std::span<const std::string_view> values) override;
  void WritePeriod(std::string_view, std::string_view) override {}

 private:
  TextSink& sink;
  std::vector<std::string> columns;
  LeadingFields leading;
};

}  // namespace varno::solve
