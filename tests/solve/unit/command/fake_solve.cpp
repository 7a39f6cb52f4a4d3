// A small stand-in for the library of varno-solve, to test the command by itself: whatever the
// equations are, the solution is x = cos(t), v = -sin(t). Words in the text steer it:
//
//     fake error          the text is wrong
//     fake note           there is something to remark
//     fake end 0.5        the solution ends at this time
//     fake start          an expression has no value at the start
//     fake raise 0.5      SIGTERM comes at this time
//     fake memory         memory is short after the first row

#include <algorithm>
#include <cmath>
#include <csignal>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "solve/library/solve.h"
#include "solve/number/moment.h"
#include "solve/number/real.h"
#include "solve/rows/number_format.h"
#include "solve/rows/row_times.h"
#include "solve/rows/time_format.h"

namespace varno::solve {

namespace {

std::shared_ptr<const Constant> Pi()
{
  static const auto kPi =
      std::make_shared<const Constant>([](mpfr_ptr result) { mpfr_const_pi(result, MPFR_RNDN); });
  return kPi;
}

Rational ParseDecimal(const std::string& text)
{
  std::string digits = text;
  long exponent = 0;
  if (const auto e = digits.find('e'); e != std::string::npos) {
    exponent = std::stol(digits.substr(e + 1));
    digits.erase(e);
  }
  if (const auto point = digits.find('.'); point != std::string::npos) {
    exponent -= static_cast<long>(digits.size() - point - 1);
    digits.erase(point, 1);
  }
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, static_cast<unsigned long>(std::labs(exponent)));
  const Rational whole(Integer(digits, 10));
  return exponent < 0 ? Rational(whole / power) : Rational(whole * power);
}

/// "3", "-0.1", "1e9", "1/3", "10*pi", "pi", "pi/3".
Moment ParseTime(const std::string& option, const std::string& text)
{
  try {
    if (text == "pi") return Moment(Pi());
    if (text.starts_with("pi/")) return Moment(Pi()) * Rational(1 / ParseDecimal(text.substr(3)));
    if (const auto star = text.find("*pi"); star != std::string::npos) {
      return Moment(Pi()) * ParseDecimal(text.substr(0, star));
    }
    if (const auto slash = text.find('/'); slash != std::string::npos) {
      return Rational(ParseDecimal(text.substr(0, slash)) / ParseDecimal(text.substr(slash + 1)));
    }
    return ParseDecimal(text);
  } catch (const std::exception&) {
    throw InputError(option + ":1:1: error: no time: '" + text + "'");
  }
}

}  // namespace

struct Problem::Implementation {
  std::string text, notes;
};

Problem::Problem(std::unique_ptr<Implementation> implementation)
    : implementation(std::move(implementation))
{}
Problem::Problem(const Problem& other)
    : implementation(std::make_unique<Implementation>(*other.implementation))
{}
Problem& Problem::operator=(const Problem& other)
{
  return *this = Problem(other);
}
Problem::Problem(Problem&&) noexcept = default;
Problem& Problem::operator=(Problem&&) noexcept = default;
Problem::~Problem() = default;

Problem Problem::Parse(std::string text, std::string name)
{
  if (text.find("fake error") != std::string::npos) {
    throw InputError(name + ":1:1: error: the text is wrong\n");
  }
  auto implementation = std::make_unique<Implementation>();
  if (text.find("fake note") != std::string::npos) {
    implementation->notes = name + ":1:1: note: something to remark\n";
  }
  implementation->text = std::move(text);
  return Problem(std::move(implementation));
}

void Problem::Set(std::string setting)
{
  if (setting.find('=') == std::string::npos) {
    throw InputError("--set:1:1: error: no setting: '" + setting + "'");
  }
}

Problem Problem::With(std::vector<std::string> settings, const std::string& /*origin*/) const
{
  Problem problem = *this;
  for (std::string& setting : settings) problem.Set(std::move(setting));
  return problem;
}

bool Problem::HasParameter(const std::string& name) const
{
  return name == "mu";
}

const std::string& Problem::Notes() const
{
  return implementation->notes;
}

Value::Value(std::string content, mpfr_srcptr source) : text(std::move(content))
{
  const auto copy = std::make_shared<Real>(mpfr_get_prec(source));
  mpfr_set(*copy, source, MPFR_RNDN);
  number = {copy, static_cast<mpfr_ptr>(*copy)};
}

double Value::ToDouble() const
{
  return mpfr_get_d(number.get(), MPFR_RNDN);
}
mpfr_srcptr Value::Get() const
{
  return number.get();
}

struct Solution::Implementation {
  Implementation(const Problem::Implementation& problem, Options options)
      : text(problem.text), options(std::move(options)), times(RowTimes::Last(Moment()))
  {}
  std::optional<Moment> TimeAfter(const std::string& words) const;
  RowTimes Times() const;
  void Step(const Moment& time);

  std::string text;
  Options options;
  std::vector<std::string> columns;
  Moment from, to;
  std::optional<Moment> end, raise;
  RowTimes times;
  std::int64_t steps = 0;
};

std::optional<Moment> Solution::Implementation::TimeAfter(const std::string& words) const
{
  const auto place = text.find(words);
  if (place == std::string::npos) return std::nullopt;
  const std::string rest = text.substr(place + words.size());
  return ParseTime("fake", rest.substr(0, rest.find_first_of(" \n")));
}

RowTimes Solution::Implementation::Times() const
{
  if (const auto* every = std::get_if<RowsEvery>(&options.rows)) {
    return RowTimes::Every(from, to, ParseTime("--every", every->interval));
  }
  if (const auto* points = std::get_if<RowsPoints>(&options.rows)) {
    return RowTimes::Points(from, to, points->count);
  }
  if (const auto* at = std::get_if<RowsAt>(&options.rows)) {
    std::vector<Moment> list;
    for (const std::string& time : at->times) list.push_back(ParseTime("--at", time));
    return RowTimes::At(from, to, list);
  }
  if (std::holds_alternative<RowAtEnd>(options.rows)) return RowTimes::Last(to);
  return RowTimes::Every(from, to, Rational(1, 4));
}

/// A step for each row.
void Solution::Implementation::Step(const Moment& time)
{
  ++steps;
  if (options.progress) {
    const double now = time.ToDouble(), first = from.ToDouble(), last = to.ToDouble();
    options.progress({now, last == first ? 1 : (now - first) / (last - first), steps, 0.25,
                      0.25 * static_cast<double>(steps)});
  }
  if (raise && time == *raise) std::raise(SIGTERM);
  if (options.interrupted && options.interrupted()) {
    throw RunEnded(EndReason::kInterrupted,
                   "interrupted at t = " + TimeFormat(options.digits).Text(time));
  }
  if (options.maxSteps && steps > *options.maxSteps) {
    throw RunEnded(EndReason::kLimit, "the limit of steps was reached");
  }
}

Solution::Solution(const Problem& problem, Options options)
    : implementation(std::make_unique<Implementation>(*problem.implementation, std::move(options)))
{
  Implementation& fake = *implementation;
  fake.columns =
      fake.options.columns.empty() ? std::vector<std::string>{"x", "v"} : fake.options.columns;
  for (const std::string& column : fake.columns) {
    if (column != "x" && column != "v") {
      throw InputError("--columns:1:1: error: no column '" + column + "'");
    }
  }
  fake.from = ParseTime("--from", fake.options.from.value_or("0"));
  fake.to = ParseTime("--to", fake.options.to);
  fake.end = fake.TimeAfter("fake end ");
  fake.raise = fake.TimeAfter("fake raise ");
  try {
    NumberFormat(fake.options.digits, fake.options.tiny);
  } catch (const std::invalid_argument& error) {
    throw InputError("--tiny:1:1: error: " + std::string(error.what()));
  }
  try {
    fake.times = fake.Times();
  } catch (const std::invalid_argument& error) {
    throw InputError("varno-solve: " + std::string(error.what()));
  }
}

Solution::Solution(Solution&&) noexcept = default;
Solution& Solution::operator=(Solution&&) noexcept = default;
Solution::~Solution() = default;

const std::vector<std::string>& Solution::Columns() const
{
  return implementation->columns;
}

int Solution::TimeWidth() const
{
  return implementation->times.Width(TimeFormat(implementation->options.digits));
}

std::optional<Row> Solution::Next()
{
  Implementation& fake = *implementation;
  if (fake.text.find("fake start") != std::string::npos) {
    throw InputError("file:1:1: error: no value at the start\n");
  }
  if (fake.steps == 1 && fake.text.find("fake memory") != std::string::npos) {
    throw std::bad_alloc();
  }
  const std::optional<Moment> time = fake.times.Next();
  if (!time) return std::nullopt;
  fake.Step(*time);
  if (fake.end && *time > *fake.end) {
    throw RunEnded(EndReason::kSingularity, "the solution ends at t = 0.5");
  }

  const int digits = fake.options.digits;
  const mpfr_prec_t bits = digits * 10 / 3 + 64;
  Real t(bits), value(bits);
  time->Evaluate(t);
  const NumberFormat format(digits, fake.options.tiny);
  Row row{Value(TimeFormat(digits).Text(*time), t), {}};
  for (const std::string& column : fake.columns) {
    if (column == "x") {
      mpfr_cos(value, t, MPFR_RNDN);
    } else {
      mpfr_sin(value, t, MPFR_RNDN);
      mpfr_neg(value, value, MPFR_RNDN);
    }
    row.values.emplace_back(format.Text(value), value);
  }
  return row;
}

Summary Solution::Summarise() const
{
  Summary summary;
  summary.steps = implementation->steps;
  summary.order = 20;
  summary.bits = 128;
  summary.digits = implementation->options.digits;
  summary.seconds = 0.25;
  return summary;
}

std::string Solution::Explain() const
{
  return "x' = v\nv' = -x\n";
}

class Family::Implementation {
 public:
  Problem problem;
  Options options;
  std::vector<std::string> names;
};

Family::Family(const Problem& problem, Options options, std::vector<std::string> names)
    : implementation(new Implementation{
          .problem = problem, .options = std::move(options), .names = std::move(names)})
{}
Family::~Family() = default;

Solution Family::At(const std::vector<SweptValue>& values) const
{
  std::vector<std::string> settings;
  for (std::size_t i = 0; i < values.size(); ++i)
    settings.push_back(implementation->names[i] + "=" + values[i].expression);
  return Solution(implementation->problem.With(settings), implementation->options);
}

std::string_view Version()
{
  return "1.0";
}

}  // namespace varno::solve
