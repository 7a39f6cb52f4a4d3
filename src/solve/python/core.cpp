// The part of the Python module varno that is written in C++: problems and solutions of the
// library, rows as plain numbers. What people call stands in varno/*.py.

#include <atomic>
#include <memory>
#include <optional>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <string>
#include <utility>
#include <vector>

#include <mpfr.h>

#include "solve/library/solve.h"

namespace py = pybind11;
using namespace varno::solve;

namespace {

/// Ends runs on other threads.
class Stop {
 public:
  void Set() { isSet = true; }
  bool IsSet() const { return isSet; }

 private:
  std::atomic<bool> isSet = false;
};

/// Python's own handlers of signals have something to say, such as that Ctrl-C was pressed.
bool SignalIsPending()
{
  const py::gil_scoped_acquire lock;
  return PyErr_CheckSignals() != 0;
}

bool IsZero(const Value& value)
{
  return mpfr_zero_p(value.Get()) != 0 || value.Text().starts_with("0e") || value.Text() == "0";
}

/// A verified zero is 0, not the noise that it is known by.
double AsDouble(const Value& value)
{
  return IsZero(value) ? 0 : value.ToDouble();
}

/// The number as (mantissa, exponent), mantissa*2^exponent; None where it is none.
py::object AsInteger(const Value& value)
{
  if (mpfr_nan_p(value.Get()) != 0) return py::none();
  if (IsZero(value)) return py::make_tuple(0, 0);
  mpz_t mantissa;
  mpz_init(mantissa);
  const mpfr_exp_t exponent = mpfr_get_z_2exp(mantissa, value.Get());
  std::string digits(mpz_sizeinbase(mantissa, 16) + 2, '\0');
  mpz_get_str(digits.data(), 16, mantissa);
  mpz_clear(mantissa);
  const auto whole =
      py::reinterpret_steal<py::object>(PyLong_FromString(digits.c_str(), nullptr, 16));
  if (!whole) throw py::error_already_set();
  return py::make_tuple(whole, static_cast<long long>(exponent));
}

/// The number `index` of a row, the time first.
const Value& Number(const Row& row, std::size_t index)
{
  return index == 0 ? row.time : row.values[index - 1];
}

/// A solution with the rows that were read so far.
class Reader {
 public:
  Reader(const Problem& problem, Options options, std::shared_ptr<Stop> stop)
  {
    options.interrupted = [stop = std::move(stop), this] {
      return (stop != nullptr && stop->IsSet()) || (isSignalled = SignalIsPending());
    };
    options.hold = true;  // they are given together
    solution.emplace(problem, std::move(options));
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Reads all rows, while other Python threads go on. Returns why the run ended early, if it did,
  /// as (reason, message).
  std::optional<std::pair<EndReason, std::string>> ReadAll()
  {
    std::optional<std::pair<EndReason, std::string>> end;
    {
      const py::gil_scoped_release unlocked;
      try {
        while (std::optional<Row> row = solution->Next()) {
          if (row->IsAskedFor()) rows.push_back(std::move(*row));
        }
      } catch (const RunEnded& ended) {
        end.emplace(ended.Reason(), ended.what());
      }
    }
    if (isSignalled) throw py::error_already_set();
    return end;
  }

  /// A column, the time first, as doubles.
  py::array_t<double> Doubles(std::size_t column) const
  {
    py::array_t<double> numbers(static_cast<py::ssize_t>(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i)
      numbers.mutable_at(static_cast<py::ssize_t>(i)) = AsDouble(Number(rows[i], column));
    return numbers;
  }

  py::list Integers(std::size_t column) const
  {
    py::list numbers;
    for (const Row& row : rows) numbers.append(AsInteger(Number(row, column)));
    return numbers;
  }

  std::vector<std::string> Texts(std::size_t column) const
  {
    std::vector<std::string> texts;
    for (const Row& row : rows) texts.push_back(Number(row, column).Text());
    return texts;
  }

  /// (numbers, whether they are verified) at a time between the rows.
  py::tuple At(const std::string& time, bool asDoubles)
  {
    const PointBetween point = solution->At(time);
    py::list numbers;
    for (const Value& value : point.row.values)
      numbers.append(asDoubles ? py::float_(AsDouble(value)) : AsInteger(value));
    return py::make_tuple(numbers, point.verified);
  }

  const std::vector<std::string>& Columns() const { return solution->Columns(); }
  Summary Summarise() const { return solution->Summarise(); }
  std::string Explain() const { return solution->Explain(); }

 private:
  bool isSignalled = false;
  std::optional<Solution> solution;
  std::vector<Row> rows;
};

/// Rows as Python names them: ("every", "1/2"), ("points", 10), ("at", [...]), ("steps", None) or
/// ("last", None).
RowChoice RowsOf(const py::tuple& choice)
{
  const auto kind = choice[0].cast<std::string>();
  if (kind == "every") return RowsEvery{choice[1].cast<std::string>()};
  if (kind == "points") return RowsPoints{choice[1].cast<long>()};
  if (kind == "at") return RowsAt{choice[1].cast<std::vector<std::string>>()};
  if (kind == "steps") return RowsAtSteps{};
  return RowAtEnd{};
}

}  // namespace

PYBIND11_MODULE(core, module)
{
  py::register_exception<InputError>(module, "InputError", PyExc_ValueError);

  py::enum_<EndReason>(module, "EndReason")
      .value("singularity", EndReason::kSingularity)
      .value("lost_domain", EndReason::kLostDomain)
      .value("out_of_range", EndReason::kOutOfRange)
      .value("limit", EndReason::kLimit)
      .value("interrupted", EndReason::kInterrupted);

  py::class_<Stop, std::shared_ptr<Stop>>(module, "Stop").def(py::init<>()).def("set", &Stop::Set);

  py::class_<Summary>(module, "Summary")
      .def_readonly("steps", &Summary::steps)
      .def_readonly("order", &Summary::order)
      .def_readonly("bits", &Summary::bits)
      .def_readonly("digits", &Summary::digits)
      .def_readonly("rows", &Summary::rows)
      .def_readonly("verified", &Summary::verified)
      .def_readonly("seconds", &Summary::seconds)
      .def_readonly("remark", &Summary::remark);

  py::class_<Problem>(module, "Problem")
      .def(py::init(&Problem::Parse))
      .def("with_settings",
           [](const Problem& problem, std::vector<std::string> settings) {
             return problem.With(std::move(settings), "set");
           })
      .def_property_readonly("notes", &Problem::Notes);

  py::class_<Options>(module, "Options")
      .def(py::init<>())
      .def_readwrite("from_", &Options::from)
      .def_readwrite("to", &Options::to)
      .def("choose_rows",
           [](Options& options, const py::tuple& choice) { options.rows = RowsOf(choice); })
      .def_readwrite("digits", &Options::digits)
      .def_readwrite("tiny", &Options::tiny)
      .def_readwrite("columns", &Options::columns)
      .def_readwrite("check", &Options::check)
      .def_readwrite("jobs", &Options::jobs)
      .def_readwrite("max_steps", &Options::maxSteps)
      .def_readwrite("max_seconds", &Options::maxSeconds)
      .def_readwrite("max_bits", &Options::maxBits)
      .def_readwrite("keep_steps", &Options::keepSteps);

  py::class_<Reader>(module, "Reader")
      .def(py::init<const Problem&, Options, std::shared_ptr<Stop>>(), py::arg("problem"),
           py::arg("options"), py::arg("stop") = nullptr)
      .def("read_all", &Reader::ReadAll)
      .def("doubles", &Reader::Doubles)
      .def("integers", &Reader::Integers)
      .def("texts", &Reader::Texts)
      .def("at", &Reader::At)
      .def("explain", &Reader::Explain)
      .def_property_readonly("columns", &Reader::Columns)
      .def_property_readonly("summary", &Reader::Summarise);

  module.attr("version") = std::string(Version());
}
