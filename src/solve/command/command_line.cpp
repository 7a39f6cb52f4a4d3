#include "solve/command/command_line.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>

#include <CLI/CLI.hpp>

#include "solve/command/long_options.h"
#include "solve/command/option_value.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

constexpr int kMostDigits = 10'000;
constexpr std::int64_t kMostJobs = 100'000;
constexpr std::size_t kHelpColumn = 20;
constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

/// What may be asked for anew with --resume.
constexpr std::string_view kResumeOptions[] = {
    "--resume",   "--save",  "--to",        "--output",      "--hold",    "--jobs",
    "--progress", "--quiet", "--max-steps", "--max-seconds", "--max-bits"};

/// The values of the options as they were written.
struct Texts {
  std::string from, to, every, points, at, digits, tiny, columns, format, output, events;
  std::string steady, period, plot, axes, title, xLabel, yLabel, save, resume;
  std::string jobs, maxSteps, maxSeconds, maxBits;
  std::vector<std::string> settings, sweeps, sweepFiles, files;
  bool steps = false, last = false, noCheck = false, explain = false, hold = false;
  bool progress = false, quiet = false, help = false, version = false;
};

/// Lists the options for readers.
class HelpFormatter final : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override
  {
    return "Usage: " + name + " [OPTIONS] FILE\n" + app->get_description() + "\n";
  }

  std::string make_description(const CLI::App* /*app*/) const override { return {}; }

  std::string make_group(std::string group, bool isPositional,
                         std::vector<const CLI::Option*> options) const override
  {
    if (isPositional) return {};
    std::string text = "\n" + group + ":\n";
    for (const CLI::Option* option : options) text += make_option(option, false);
    // The caller puts another line end behind each group.
    text.pop_back();
    return text;
  }

  std::string make_option(const CLI::Option* option, bool /*isPositional*/) const override
  {
    std::string text = "  " + option->get_name();
    if (option->get_items_expected_max() > 0) text += " " + option->get_type_name();
    text.append(text.size() < kHelpColumn + 1 ? kHelpColumn + 2 - text.size() : 2, ' ');
    return text + option->get_description() + "\n";
  }
};

/// The command line of varno-solve: one table for CLI11, for abbreviations and for the help.
class Parser {
 public:
  Parser();
  std::variant<CommandLine, Information> Parse(const std::vector<std::string>& arguments);

 private:
  void AddValue(const std::string& name, const std::string& valueName, std::string& text,
                const std::string& description);
  void AddList(const std::string& name, const std::string& valueName,
               std::vector<std::string>& list, const std::string& description);
  void AddSwitch(const std::string& name, bool& isOn, const std::string& description);
  void AddRowOptions();
  void AddNumberOptions();
  void AddProblemOptions();
  void AddOutputOptions();
  void AddLimits();

  bool IsGiven(const std::string& name) const { return app.get_option(name)->count() > 0; }
  std::vector<std::string> WithoutStates(const std::vector<std::string>& arguments) const;
  void RequireResumable() const;
  std::string File() const;
  RowChoice Rows() const;
  Format OutputFormat() const;
  std::optional<PlotRequest> Plot() const;
  Options SolverOptions() const;

  CLI::App app;
  std::string group;  ///< of the options that are being added
  Texts texts;
};

Parser::Parser()
    : app("Solves initial-value problems of ordinary differential equations. FILE holds the\n"
          "equations; \"-\" is standard input.",
          "varno-solve")
{
  app.set_help_flag();  // ours is one of the switches below
  app.formatter(std::make_shared<HelpFormatter>());
  app.add_option("FILE", texts.files);
  AddRowOptions();
  AddNumberOptions();
  AddProblemOptions();
  AddOutputOptions();
  AddLimits();
}

void Parser::AddValue(const std::string& name, const std::string& valueName, std::string& text,
                      const std::string& description)
{
  app.add_option(name, text, description)->take_last()->type_name(valueName)->group(group);
}

void Parser::AddSwitch(const std::string& name, bool& isOn, const std::string& description)
{
  app.add_flag(name, isOn, description)->take_last()->group(group);
}

/// An option that may be given several times and keeps all of its values.
void Parser::AddList(const std::string& name, const std::string& valueName,
                     std::vector<std::string>& list, const std::string& description)
{
  app.add_option(name, list, description)
      ->allow_extra_args(false)
      ->type_name(valueName)
      ->group(group);
}

void Parser::AddRowOptions()
{
  group = "Rows (times are constants such as 2.5, 1/3, 10*pi)";
  AddValue("--from", "T", texts.from, "first time (that of the start values, else 0)");
  AddValue("--to", "T", texts.to, "last time (1); before --from, time runs backwards");
  AddValue("--every", "DT", texts.every, "rows at multiples of DT from the first time on");
  AddValue("--points", "N", texts.points, "rows at the ends of N equal parts (100)");
  AddValue("--at", "T,T,...", texts.at, "rows at these times");
  AddSwitch("--steps", texts.steps, "rows at the ends of the solver's own steps");
  AddSwitch("--last", texts.last, "the row of the last time only");
  AddValue("--columns", "NAMES", texts.columns, "these columns, as in y,x (all)");
  AddValue("--steady", "TOL", texts.steady,
           "stop at rest: each derivative below TOL times its size");
  AddValue("--period", "NAME", texts.period, "tell the period of this variable");
}

void Parser::AddNumberOptions()
{
  group = "Numbers";
  AddValue("--digits", "D", texts.digits, "significant digits, 1 to 10000 (15)");
  AddValue("--tiny", "X", texts.tiny, "what is smaller counts as zero (1e-1000)");
  AddSwitch("--no-check", texts.noCheck, "one run instead of two: faster, not verified");
}

void Parser::AddProblemOptions()
{
  group = "Problem";
  AddList("--set", "NAME=EXPR", texts.settings,
          "change a parameter or a start value: mu=7, 'x(0)=2'");
  AddList("--sweep", "NAME=VALUES", texts.sweeps,
          "a run for each value: mu=1,2,5 or mu=FIRST:LAST:STEP");
  AddList("--sweep-file", "CSV", texts.sweepFiles,
          "a run for each line of a file; names in the first");
  AddValue("--jobs", "N", texts.jobs, "threads (all cores)");
  AddSwitch("--explain", texts.explain, "tell how the equations are understood; no run");
}

void Parser::AddOutputOptions()
{
  group = "Output";
  AddValue("--format", "FORMAT", texts.format, "table, csv or json (table)");
  AddValue("--output", "FILE", texts.output, "write the rows into a file");
  AddValue("--events", "FILE", texts.events, "write the events into a file, as csv");
  AddValue("--plot", "FILE", texts.plot,
           "a picture by gnuplot: .png, .svg, .pdf; -: in the terminal");
  AddValue("--axes", "X:Y[:Z]", texts.axes, "which columns go against which (all against t)");
  AddValue("--title", "TEXT", texts.title, "of the picture");
  AddValue("--xlabel", "TEXT", texts.xLabel, "of its first axis (the column's name)");
  AddValue("--ylabel", "TEXT", texts.yLabel, "of its second axis");
  AddValue("--save", "FILE", texts.save, "keep in a file where the run or the sweep stands");
  AddValue("--resume", "FILE", texts.resume, "go on from there; the state holds the equations");
  AddSwitch("--hold", texts.hold, "print nothing before all rows are there");
  AddSwitch("--progress", texts.progress, "tell on standard error how far the run is");
  AddSwitch("--quiet", texts.quiet, "no notes and no summary on standard error");
  AddSwitch("--help", texts.help, "print this text");
  AddSwitch("--version", texts.version, "print the version");
}

void Parser::AddLimits()
{
  group = "Limits";
  AddValue("--max-steps", "N", texts.maxSteps, "end after so many steps");
  AddValue("--max-seconds", "S", texts.maxSeconds, "end after so much time");
  AddValue("--max-bits", "B", texts.maxBits, "the highest precision to try (1048576)");
}

std::variant<CommandLine, Information> Parser::Parse(const std::vector<std::string>& arguments)
{
  std::vector<std::string> expanded = ExpandLongOptions(app, arguments);
  const std::vector<std::string> given = WithoutStates(expanded);
  // CLI11 takes its arguments from the back.
  std::reverse(expanded.begin(), expanded.end());
  try {
    app.parse(std::move(expanded));
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  if (texts.help) return Information{app.help()};
  if (texts.version) return Information{"varno-solve " + std::string(Version()) + "\n"};

  CommandLine commandLine;
  commandLine.given = given;
  if (IsGiven("--save")) commandLine.save = texts.save;
  if (IsGiven("--resume")) {
    RequireResumable();
    commandLine.resume = texts.resume;
    return commandLine;
  }
  commandLine.file = File();
  commandLine.options = SolverOptions();
  commandLine.settings = texts.settings;
  commandLine.format = OutputFormat();
  if (IsGiven("--output")) commandLine.output = texts.output;
  if (IsGiven("--events")) commandLine.events = texts.events;
  commandLine.plot = Plot();
  if (commandLine.save && commandLine.plot)
    throw UsageError("--save and --plot exclude each other: draw the rows of --output");
  commandLine.sweeps = texts.sweeps;
  commandLine.sweepFiles = texts.sweepFiles;
  if (IsGiven("--jobs"))
    commandLine.jobs = static_cast<int>(WholeNumber("--jobs", texts.jobs, 1, kMostJobs));
  if (commandLine.events && commandLine.IsSweep())
    throw UsageError(
        "--events belongs to a single run: a sweep has its events among the rows of a table or "
        "json");
  commandLine.explain = texts.explain;
  commandLine.hold = texts.hold;
  commandLine.progress = texts.progress;
  commandLine.quiet = texts.quiet;
  return commandLine;
}

/// A state holds everything but what may change from one process to the next.
void Parser::RequireResumable() const
{
  if (!texts.files.empty())
    throw UsageError("--resume takes no FILE: the state holds the equations");
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = option->get_name();
    const bool isKnown = std::ranges::find(kResumeOptions, name) != std::end(kResumeOptions);
    if (option->count() > 0 && !isKnown)
      throw UsageError(name + " cannot be changed with --resume: the state holds it");
  }
}

/// The options among arguments in their plain form, without those that name states.
std::vector<std::string> Parser::WithoutStates(const std::vector<std::string>& arguments) const
{
  std::vector<std::string> options;
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    const std::string& name = arguments[i];
    const bool isState = name == "--save" || name == "--resume";
    if (!isState) options.push_back(name);
    if (app.get_option(name)->get_items_expected_max() == 0) continue;
    ++i;
    if (!isState) options.push_back(arguments[i]);
  }
  return options;
}

std::string Parser::File() const
{
  if (texts.files.empty()) throw UsageError("no FILE given");
  if (texts.files.size() > 1) {
    throw UsageError("one FILE at a time, not '" + texts.files[0] + "' and '" + texts.files[1] +
                     "'");
  }
  return texts.files.front();
}

RowChoice Parser::Rows() const
{
  const char* chosen = nullptr;
  for (const char* name : {"--every", "--points", "--at", "--steps", "--last"}) {
    if (!IsGiven(name)) continue;
    if (chosen != nullptr) {
      throw UsageError(std::string(chosen) + " and " + name +
                       " exclude each other: both say at which times there are rows");
    }
    chosen = name;
  }

  if (IsGiven("--every")) return RowsEvery{texts.every};
  if (IsGiven("--points")) {
    return RowsPoints{static_cast<long>(WholeNumber("--points", texts.points, 1, kNoLimit - 1))};
  }
  if (IsGiven("--at")) return RowsAt{SplitAtCommas("--at", texts.at)};
  if (texts.steps) return RowsAtSteps{};
  if (texts.last) return RowAtEnd{};
  return RowsPoints{};
}

Format Parser::OutputFormat() const
{
  if (!IsGiven("--format") || texts.format == "table") return Format::kTable;
  if (texts.format == "csv") return Format::kCsv;
  if (texts.format == "json") return Format::kJson;
  throw UsageError("--format takes table, csv or json, not '" + texts.format + "'");
}

std::optional<PlotRequest> Parser::Plot() const
{
  if (!IsGiven("--plot")) {
    for (const char* name : {"--axes", "--title", "--xlabel", "--ylabel"}) {
      if (IsGiven(name)) throw UsageError(std::string(name) + " belongs to --plot");
    }
    return std::nullopt;
  }
  PlotRequest request{.file = texts.plot,
                      .axes = {},
                      .title = texts.title,
                      .xLabel = texts.xLabel,
                      .yLabel = texts.yLabel};
  if (!IsGiven("--axes")) return request;
  request.axes = SplitOutside(texts.axes, ':');
  const bool hasEmpty = std::ranges::find(request.axes, "") != request.axes.end();
  if (request.axes.size() < 2 || request.axes.size() > 3 || hasEmpty)
    throw UsageError("--axes takes two or three columns, as in x:y, not '" + texts.axes + "'");
  return request;
}

Options Parser::SolverOptions() const
{
  Options options;
  if (IsGiven("--from")) options.from = texts.from;
  if (IsGiven("--to")) options.to = texts.to;
  options.rows = Rows();
  if (IsGiven("--period")) options.period = texts.period;
  if (IsGiven("--steady")) options.steady = texts.steady;
  if (IsGiven("--digits")) {
    options.digits = static_cast<int>(WholeNumber("--digits", texts.digits, 1, kMostDigits));
  }
  if (IsGiven("--tiny")) options.tiny = texts.tiny;
  if (IsGiven("--columns")) options.columns = SplitAtCommas("--columns", texts.columns);
  options.check = !texts.noCheck;
  options.hold = texts.hold;
  if (IsGiven("--max-steps")) {
    options.maxSteps = WholeNumber("--max-steps", texts.maxSteps, 1, kNoLimit);
  }
  if (IsGiven("--max-seconds")) options.maxSeconds = Seconds("--max-seconds", texts.maxSeconds);
  if (IsGiven("--max-bits")) {
    options.maxBits = static_cast<long>(WholeNumber("--max-bits", texts.maxBits, 1, kNoLimit));
  }
  return options;
}

}  // namespace

std::variant<CommandLine, Information> ParseCommandLine(const std::vector<std::string>& arguments)
{
  return Parser().Parse(arguments);
}

CommandLine WithState(const CommandLine& resuming, const std::vector<std::string>& options,
                      const std::string& file)
{
  std::vector<std::string> arguments = options;
  arguments.insert(arguments.end(), {"--", file});
  const auto earlier = std::get<CommandLine>(ParseCommandLine(arguments));
  arguments = options;
  arguments.insert(arguments.end(), resuming.given.begin(), resuming.given.end());
  arguments.insert(arguments.end(), {"--", file});
  auto commandLine = std::get<CommandLine>(ParseCommandLine(arguments));
  const bool changesEnd = std::ranges::find(resuming.given, "--to") != resuming.given.end();
  if (commandLine.IsSweep() && changesEnd)
    throw UsageError("--to cannot be changed with --resume of a sweep: the state holds it");
  commandLine.continuesOutput = commandLine.output == earlier.output;
  commandLine.save = resuming.save;
  commandLine.resume = resuming.resume;
  return commandLine;
}

}  // namespace varno::solve
