#pragma once

#include <string>
#include <vector>

#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Comma-separated values as RFC 4180 describes them, with line feeds alone at the ends of lines: a
/// header line `t,x,v`, then rows, without blanks. Leading fields come before t. Names are quoted
/// where they need it.
class CsvWriter final : public RowWriter {
 public:
  CsvWriter(TextSink& sink, std::vector<std::string> columns, LeadingFields leading = {});
  void Begin() override;
  void Write(std::string_view time, std::span<const std::string_view> values) override;
  /// On purpose: a table with other lines in it would be none for its readers.
  void WriteEvent(std::string_view, std::string_view, std::span<const std::string_view>) override {}
  void WritePeriod(std::string_view, std::string_view) override {}

 private:
  TextSink& sink;
  std::vector<std::string> columns;
  LeadingFields leading;
  std::string line;
};

}  // namespace varno::solve
