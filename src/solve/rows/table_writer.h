#pragma once

#include <string>
#include <vector>

#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// An aligned table for readers, gnuplot, awk and numpy.loadtxt:
///
///     # t  x  v
///     0    1.00e+00   0
///     0.5  8.78e-01  -4.79e-01
///
/// The time stands to the left in the width of the longest. A value without a minus has a blank in
/// its place, and all but the last are filled with blanks up to the width of a value with
/// this number of digits. Longer texts push to the right what follows. An event is a comment:
///
///     # event hit  0.25  0  -1.25e+00
///
/// and so is a period:
///
///     # period of x  6.28e+00
class TableWriter final : public RowWriter {
 public:
  TableWriter(TextSink& sink, std::vector<std::string> columns, int timeWidth, int digits);
  void Begin() override;
  void Write(std::string_view time, std::span<const std::string_view> values) override;
  void WriteEvent(std::string_view name, std::string_view time,
                  std::span<const std::string_view> values) override;
  void WritePeriod(std::string_view variable, std::string_view period) override;

 private:
  TextSink& sink;
  std::vector<std::string> columns;
  std::size_t timeWidth;
  std::size_t valueWidth;
  std::string line;
};

}  // namespace varno::solve
