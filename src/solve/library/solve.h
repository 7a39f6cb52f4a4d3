#pragma once

/// The library of varno-solve: initial-value problems of ordinary differential equations, solved by
/// the Taylor series method to any number of digits.
///
///     auto problem = varno::solve::Problem::Parse("x' = v & 1; v' = -x;", "oscillator");
///     varno::solve::Solution solution(problem, {.to = "10", .digits = 30});
///     while (auto row = solution.Next()) std::cout << row->time.Text() << ' ' <<
///     row->values[0].Text() << '\n';
///
/// Nothing is shared between objects: different threads may use different objects freely.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <mpfr.h>

namespace varno::solve {

/// A problem, a setting or an option that is not right as written. what() says where
/// (file:line:column, the line, a caret), what was wrong and what would be right.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why a run ended before its last row.
enum class EndReason {
  kSingularity,  ///< the solution, or an expression of the equations, has no value beyond a point
  kLostDomain,   ///< an expression of the equations is not defined
  kOutOfRange,   ///< a number is too large or too small for the arithmetic
  kLimit,        ///< one of the limits of Options was reached
  kInterrupted,  ///< Options::interrupted said so
  kWrongRow,     ///< a better attempt found a row wrong that was already given: what() names it
};

/// A run that ended early. All rows given before are right. what() says how far it got and why.
class RunEnded : public std::runtime_error {
 public:
  RunEnded(EndReason reason, const std::string& message)
      : std::runtime_error(message), reason(reason)
  {}
  EndReason Reason() const { return reason; }

 private:
  EndReason reason;
};

/// One of the values that a parameter or a start value takes in a sweep.
struct SweptValue {
  std::string expression;  ///< exact, for the right side of a setting
  std::string text;        ///< as rows show it
  std::string fraction;    ///< the value in lowest terms, "1/3"; empty where it is irrational
};

/// The values of a sweep, in order, each made when it is asked for.
struct SweptValues {
  std::int64_t count = 0;
  std::function<SweptValue(std::int64_t)> at;

  /// first, first + step, ... up to last, which is among them if a step ends there: constant
  /// expressions such as "1/3" and "2*pi", without parameters, which may change from run to run.
  /// Texts show the values as those of times, with `digits` digits where they are not exact. Throws
  /// InputError where an expression is wrong, or the step does not lead to the last value.
  static SweptValues Range(const std::string& first, const std::string& last,
                           const std::string& step, int digits);
  /// These constant expressions. Throws InputError.
  static SweptValues List(const std::vector<std::string>& expressions, int digits);
};

/// The equations of one file, understood: names resolved, orders reduced. A value: copies are
/// independent, and solving does not change it.
class Problem {
 public:
  /// Reads a text in the language of varno-solve; `name` stands for it in messages.
  /// Throws InputError with all mistakes of the text.
  static Problem Parse(std::string text, std::string name);

  /// Changes a parameter or a start value: "mu=7", "x(0)=2", "y'(0)=1/3". The right side is a
  /// constant expression and may use parameters. Throws InputError.
  void Set(std::string setting);
  /// The same problem with these settings, in order, besides its own: as Set for each of them, but
  /// the text is read once. In messages `origin` stands for each of them.
  Problem With(std::vector<std::string> settings, const std::string& origin = "--set") const;
  /// Whether there is a parameter of this name.
  bool HasParameter(const std::string& name) const;

  /// Remarks that are no mistakes, rendered, such as on t or y' meaning something else in varno.
  const std::string& Notes() const;

  Problem(const Problem&);
  Problem& operator=(const Problem&);
  Problem(Problem&&) noexcept;
  Problem& operator=(Problem&&) noexcept;
  ~Problem();

 private:
  friend class Solution;
  friend class Family;
  struct Implementation;
  explicit Problem(std::unique_ptr<Implementation> implementation);
  std::unique_ptr<Implementation> implementation;
};

/// Rows at multiples of a time from the first row on, and at the end.
struct RowsEvery {
  std::string interval;  ///< constant expression > 0, as "0.1"
};
/// `count` equal parts of the interval: count + 1 rows.
struct RowsPoints {
  long count = 100;
};
/// Rows at these times (constant expressions), which must lie in the interval, in its direction.
struct RowsAt {
  std::vector<std::string> times;
};
/// Rows at the ends of the solver's own steps.
struct RowsAtSteps {};
/// The end only.
struct RowAtEnd {};
using RowChoice = std::variant<RowsPoints, RowsEvery, RowsAt, RowsAtSteps, RowAtEnd>;

/// How far a run is, for those who wait.
struct Progress {
  double time;      ///< where the integration stands
  double fraction;  ///< of the interval, 0 to 1
  std::int64_t steps;
  double step;            ///< the latest step's length
  double seconds;         ///< since the start
  double stepsAhead = 0;  ///< to the end of the interval, if all were as long as the latest
};

/// One number of a row.
class Value {
 public:
  /// The number with the digits asked for, rounded to nearest: "1.50000e+00", "0", "nan" where a
  /// definition has no value. For a time: as short as it is exact, else with these digits.
  const std::string& Text() const { return text; }
  double ToDouble() const;
  /// The number itself, with some digits more than those that count.
  mpfr_srcptr Get() const;

  Value(std::string text, mpfr_srcptr number);

 private:
  std::string text;
  std::shared_ptr<__mpfr_struct> number;
};

/// A step of a run: the Taylor series of each state about its beginning. A value: it stays what it
/// is while the run goes on, and copies are cheap.
class Step {
 public:
  /// 0, and 1 for the more exact of two runs.
  int Run() const { return run; }
  /// How often the runs had begun again, with more digits, before: steps of earlier attempts count
  /// no longer.
  int Attempt() const { return attempt; }
  /// Exact times are as short as they are; the end lies before the beginning where time runs
  /// backwards.
  const Value& Begin() const { return begin; }
  const Value& End() const { return end; }
  int Order() const;
  long Bits() const;  ///< of the arithmetic
  /// The Taylor coefficient x^(k)(begin)/k! of a state, counted as in Solution::States(), with the
  /// digits asked for: 0 <= k <= Order(). It is that of this run, and not verified. Throws
  /// std::out_of_range.
  Value Coefficient(std::size_t state, int k) const;

 private:
  friend class Solution;
  struct Data;
  Step(int run, int attempt, Value begin, Value end, std::shared_ptr<const Data> data);
  int run, attempt;
  Value begin, end;
  std::shared_ptr<const Data> data;
};

struct Options {
  /// The interval of the rows, constant expressions such as "10*pi"; `to` may lie before `from`.
  std::optional<std::string> from = {};  ///< the point of the start statements, else 0
  std::string to = "1";
  RowChoice rows = RowsPoints{};
  /// A constant expression > 0, in 1/time: the run stops, with a row, at the end of the first
  /// hundredth of its interval over which no variable has a derivative of more than this times the
  /// largest magnitude that the variable has had so far.
  std::optional<std::string> steady = {};
  /// A variable whose period is looked for, by its maxima (Row::period).
  std::optional<std::string> period = {};
  int digits = 15;               ///< significant digits of each number, 1 to 10,000
  std::string tiny = "1e-1000";  ///< what is smaller counts as 0; a decimal number
  /// Names, in this order; empty: all, in the order of the file.
  std::vector<std::string> columns = {};
  bool check = true;  ///< two runs instead of one
  /// No row before all are there: instead of an end by kWrongRow, the rows of the better attempt.
  bool hold = false;
  int jobs = 0;  ///< threads; 0: as many as there are processors
  std::optional<std::int64_t> maxSteps = {};
  std::optional<double> maxSeconds = {};
  long maxBits = 1L << 20;  ///< the highest precision to try
  /// Both are called on the thread that asks for rows.
  std::function<bool()> interrupted = {};  ///< asked many times a second: true ends the run
  std::function<void(const Progress&)> progress = {};  ///< called after each step
  double progressFrom = 0;  ///< seconds that pass before `progress` is called first
  /// Called after each step of each run, in the same thread as well.
  std::function<void(const Step&)> step = {};
  /// Called, once, with a remark on a run that goes on: that it is stiff, and how long it will
  /// take.
  std::function<void(const std::string&)> notice = {};
  bool keepSteps = false;  ///< for Solution::At and Solution::Steps; takes memory for each step
};

struct Row {
  Value time;
  std::vector<Value> values;  ///< one for each of Solution::Columns()
  /// The name of an event, of which this is the place: the values are those that it meets, before
  /// its assignments. Empty: a row that was asked for, or that of a `stop`.
  std::string event = {};
  /// The period of Options::period, told once, where it was found: there are no values then.
  std::string period = {};

  /// Whether it is a row that was asked for, or that of a `stop`.
  bool IsAskedFor() const { return event.empty() && period.empty(); }
};

/// The solution at a time between rows.
struct PointBetween {
  Row row;
  /// Whether both runs agree on each of its numbers, as they do on those of rows. If not, most
  /// often because a number is nearly 0, it holds what the better run says; as a row it would be
  /// computed with more digits.
  bool verified;
};

/// What a run did.
struct Summary {
  std::int64_t steps = 0;
  int order = 0;          ///< of the latest step
  long bits = 0;          ///< of the arithmetic
  int digits = 0;         ///< asked for
  std::int64_t rows = 0;  ///< given so far
  bool verified = false;  ///< whether a second run verified each of them
  double seconds = 0;     ///< wall time
  std::string remark;     ///< a further sentence; usually empty
};

/// The solution of a problem, row by row.
class Solution {
 public:
  /// Checks the options; computes nothing yet. Throws InputError.
  Solution(const Problem& problem, Options options);
  Solution(Solution&&) noexcept;
  Solution& operator=(Solution&&) noexcept;
  ~Solution();

  /// The names of the columns, without t.
  const std::vector<std::string>& Columns() const;
  /// The length of the longest text of a time that will come, for aligned tables; of a typical one
  /// where it is not known beforehand.
  int TimeWidth() const;
  /// The next row, event (Row::event) or period (Row::period), none after the last. Throws RunEnded
  /// where the run ends early, at its start, too, where an expression has no value there.
  std::optional<Row> Next();
  /// With Options::keepSteps: the solution at any time, a constant expression, that lies between
  /// the start and the latest row, in any order. Throws InputError where it does not, RunEnded
  /// where a number cannot be held.
  PointBetween At(const std::string& time);
  /// The same at exactly this double.
  PointBetween At(double time);
  /// With Options::keepSteps: the steps so far of the better run.
  std::vector<Step> Steps() const;
  /// The names of the states of first order that the equations were reduced to, such as x and x'.
  const std::vector<std::string>& States() const;
  Summary Summarise() const;
  /// The equations as understood: states, parameters, order reductions, operations after sharing,
  /// precision, order and memory chosen. Several lines.
  std::string Explain() const;

 private:
  friend class Family;
  struct Implementation;
  explicit Solution(std::unique_ptr<Implementation> implementation);
  std::unique_ptr<Implementation> implementation;
};

/// Solutions of one problem that differ in the values of some names: the equations are read and
/// compiled once, as far as the values leave them the same.
class Family {
 public:
  /// `names` are what Problem::Set takes before "=": "mu", "x(0)". Throws InputError where the
  /// problem has no such name.
  Family(const Problem& problem, Options options, std::vector<std::string> names);
  Family(Family&&) noexcept;
  Family& operator=(Family&&) noexcept;
  ~Family();

  /// The solution with these values of the names, in their order: the same as of
  /// Problem::With(settings). Throws what Problem::With and Solution throw. Safe on several
  /// threads.
  Solution At(const std::vector<SweptValue>& values) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation;
};

/// "1.0", as in CMake and on the command line.
std::string_view Version();

}  // namespace varno::solve
