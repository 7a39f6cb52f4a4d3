// Solves the first steps of any problem, with few digits and tight limits, and formats all that
// comes of it.
//
// When the first byte is 128 or more, those behind it choose among the productions of the grammar;
// else the bytes are the text of a problem, up to a byte 0xFF. What stands behind that byte chooses
// the options.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz/solve/problem_writer.h"
#include "solve/library/solve.h"

namespace {

using namespace varno::solve;

constexpr std::int64_t kMostSteps = 6;
constexpr long kMostBits = 400;
constexpr int kMostRows = 50;
/// A series may need thousands of terms, a hundred times as slow here; a run must heed the limit.
constexpr double kMostSeconds = 10;

class Chooser {
 public:
  explicit Chooser(std::string_view bytes) : bytes(bytes) {}

  std::size_t Choose(std::size_t count)
  {
    if (bytes.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(bytes.front());
    bytes.remove_prefix(1);
    return byte % count;
  }

 private:
  std::string_view bytes;
};

RowChoice ChooseRows(Chooser& chooser)
{
  switch (chooser.Choose(5)) {
    case 0:
      return RowsPoints{3};
    case 1:
      return RowAtEnd{};
    case 2:
      return RowsAtSteps{};
    case 3:
      return RowsEvery{"pi/10"};
    default:
      return RowsAt{{"1/3", "0.1", "0"}};
  }
}

Options ChooseOptions(std::string_view bytes)
{
  static constexpr const char* const kTimes[] = {"1",   "-1",   "10",     "1/3", "pi",     "1e-9",
                                                 "1e9", "1e40", "1e-400", "0",   "2^(1/2)"};
  Chooser chooser(bytes);
  Options options;
  options.digits = 1 + static_cast<int>(chooser.Choose(25));
  options.to = kTimes[chooser.Choose(std::size(kTimes))];
  options.rows = ChooseRows(chooser);
  if (chooser.Choose(4) == 3) options.from = kTimes[chooser.Choose(std::size(kTimes))];
  options.check = chooser.Choose(4) != 3;
  options.maxSteps = kMostSteps;
  options.maxBits = kMostBits;
  options.maxSeconds = kMostSeconds;
  return options;
}

void Solve(const std::string& text, const Options& options)
{
  try {
    const Problem problem = Problem::Parse(text, "fuzz.varno");
    Solution solution(problem, options);
    solution.Explain();
    for (int i = 0; i < kMostRows && solution.Next(); ++i) {
    }
    solution.Summarise();
  } catch (const InputError&) {
  } catch (const RunEnded&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t end = bytes.find('\xFF');
  const std::string_view problem = bytes.substr(0, end);
  const std::string_view options = end == std::string_view::npos ? "" : bytes.substr(end + 1);
  if (!problem.empty() && static_cast<std::uint8_t>(problem.front()) >= 128) {
    Solve(ProblemWriter(problem.substr(1)).Write(), ChooseOptions(options));
  } else {
    Solve(std::string(problem), ChooseOptions(options));
  }
  return 0;
}
