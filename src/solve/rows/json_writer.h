#pragma once

#include <string>
#include <vector>

#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// One JSON object a line: {"t":"0.1","x":"1.0e+00"}. Leading fields come before t. Numbers are
/// strings, because readers of JSON would round them to double precision. An event begins with its
/// name: {"event":"hit","t":"0.1","x":"0"}, a period with that: {"period":"6.28e+00","of":"x"}.
class JsonWriter final : public RowWriter {
 public:
  JsonWriter(TextSink& sink, const std::vector<std::string>& columns,
             const LeadingFields& leading = {});
  void Begin() override {}
  void Write(std::string_view time, std::span<const std::string_view> values) override;
  void WriteEvent(std::string_view name, std::string_view time,
                  std::span<const std::string_view> values) override;
  void WritePeriod(std::string_view variable, std::string_view period) override;

 private:
  void AppendRow(std::string_view time, std::span<const std::string_view> values);

  TextSink& sink;
  std::string fields;             ///< leading ones, each with a comma behind it
  std::string begin;              ///< of each row, up to the text of the time
  std::vector<std::string> keys;  ///< as they stand between two values: `","x":"`
  std::string line;
};

}  // namespace varno::solve
