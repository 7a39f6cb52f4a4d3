#include "solve/plot/gnuplot_script.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include <fmt/format.h>

namespace varno::solve {

namespace {

/// More curves than this need no key: nobody could tell them apart.
constexpr std::size_t kMostKeys = 24;

/// A text in gnuplot's single quotes, in which a quote is written twice. Several quotes in a row,
/// as of f'', gnuplot reads wrongly: they stand in double quotes, joined by its operator for texts.
std::string Quoted(const std::string& text)
{
  std::string quoted = "'";
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t end = std::min(text.find_first_not_of('\'', i), text.size());
    const std::size_t quotes = end - i;
    if (quotes > 1) {
      quoted += "'.\"" + text.substr(i, quotes) + "\".'";
    } else if (quotes == 1) {
      quoted += "''";
    } else if (text[i] != '\n') {
      quoted += text[i];
    }
    i += std::max<std::size_t>(quotes, 1);
  }
  return quoted + "'";
}

std::string SuffixOf(const std::string& file)
{
  const auto point = file.rfind('.');
  return point == std::string::npos ? "" : file.substr(point + 1);
}

/// The command that chooses how the picture is made.
std::string TerminalCommand(const PlotRequest& request)
{
  if (request.file == "-") {
    return fmt::format("set terminal dumb noenhanced size {},{}\n", request.terminalWidth,
                       request.terminalHeight);
  }
  const std::string suffix = SuffixOf(request.file);
  std::string terminal;
  if (suffix == "png") terminal = "pngcairo noenhanced size 960,600";
  if (suffix == "svg") terminal = "svg noenhanced size 960,600 dynamic";
  if (suffix == "pdf") terminal = "pdfcairo noenhanced size 16cm,10cm";
  return fmt::format("set terminal {}\nset output {}\n", terminal, Quoted(request.file));
}

/// Writes the commands for one picture.
class Script {
 public:
  Script(const PlotRequest& request, const PlotData& data);
  std::string Text();

 private:
  /// One curve, or one cloud of points.
  struct Curve {
    std::string block;                 ///< of data
    std::vector<std::size_t> columns;  ///< of x, y and perhaps z
    std::string title;
  };

  std::size_t ColumnOf(const std::string& name) const;
  bool IsOverRuns() const { return x < data.sweptCount; }
  void ChooseColumns();
  void AddData();
  void AddRows(const PlottedRun& run);
  void AddCurves(const std::string& block, const std::string& runTitle);
  void AddLabels();
  void AddPlot();

  const PlotRequest& request;
  const PlotData& data;
  std::size_t x = 0;
  std::vector<std::size_t> ys;  // each is a curve
  std::size_t z = 0;            // when there are three axes
  std::vector<Curve> curves;
  std::string text;
};

Script::Script(const PlotRequest& request, const PlotData& data) : request(request), data(data)
{
  ChooseColumns();
}

std::size_t Script::ColumnOf(const std::string& name) const
{
  return static_cast<std::size_t>(std::ranges::find(data.columns, name) - data.columns.begin());
}

void Script::ChooseColumns()
{
  const std::size_t time = data.sweptCount;
  if (!request.axes.empty()) {
    x = ColumnOf(request.axes[0]);
    ys = {ColumnOf(request.axes[1])};
    if (request.axes.size() > 2) z = ColumnOf(request.axes[2]);
    return;
  }
  x = time > 0 && data.HasSingleRows() ? time - 1 : time;
  for (std::size_t column = time + 1; column < data.columns.size(); ++column) ys.push_back(column);
}

void Script::AddRows(const PlottedRun& run)
{
  const std::size_t width = data.columns.size();
  for (std::size_t i = 0; i < run.values.size(); ++i) {
    text += fmt::format("{:.17g}{}", run.values[i], (i + 1) % width == 0 ? '\n' : ' ');
  }
}

/// The data, a block for each run; all in one where curves go from run to run.
void Script::AddData()
{
  if (IsOverRuns()) {
    text += "$runs << END\n";
    for (const PlottedRun& run : data.runs) AddRows(run);
    text += "END\n";
    return AddCurves("$runs", "");
  }
  for (std::size_t i = 0; i < data.runs.size(); ++i) {
    const std::string block = fmt::format("$run{}", i + 1);
    text += block + " << END\n";
    AddRows(data.runs[i]);
    text += "END\n";
    AddCurves(block, data.runs[i].title);
  }
}

void Script::AddCurves(const std::string& block, const std::string& runTitle)
{
  const bool namesColumns = ys.size() > 1 || runTitle.empty();
  for (const std::size_t y : ys) {
    std::string title = namesColumns ? data.columns[y] : "";
    if (!title.empty() && !runTitle.empty()) title += ", ";
    Curve curve{block, {x, y}, title + runTitle};
    if (request.axes.size() > 2) curve.columns.push_back(z);
    curves.push_back(std::move(curve));
  }
}

void Script::AddLabels()
{
  if (!request.title.empty()) text += "set title " + Quoted(request.title) + "\n";
  const std::string& xName = request.xLabel.empty() ? data.columns[x] : request.xLabel;
  text += "set xlabel " + Quoted(xName) + "\n";
  std::string yName = request.yLabel;
  if (yName.empty() && ys.size() == 1) yName = data.columns[ys.front()];
  if (!yName.empty()) text += "set ylabel " + Quoted(yName) + "\n";
  if (request.axes.size() > 2) text += "set zlabel " + Quoted(data.columns[z]) + "\n";
  text += curves.size() > 1 && curves.size() <= kMostKeys ? "set key outside\n" : "set key off\n";
  text += "set grid\nset xyplane relative 0\n";
}

void Script::AddPlot()
{
  const char* const style = !IsOverRuns()          ? "lines"
                            : data.HasSingleRows() ? "linespoints pointtype 7 pointsize 0.4"
                                                   : "points pointtype 7 pointsize 0.2";
  std::string separator = request.axes.size() > 2 ? "splot " : "plot ";
  for (const Curve& curve : curves) {
    std::string columns;
    for (const std::size_t column : curve.columns)
      columns += (columns.empty() ? "" : ":") + std::to_string(column + 1);
    text += fmt::format("{}{} using {} with {} title {}", separator, curve.block, columns, style,
                        Quoted(curve.title));
    separator = ", \\\n     ";
  }
  text += "\n";
}

std::string Script::Text()
{
  text = TerminalCommand(request);
  AddData();
  AddLabels();
  AddPlot();
  return text;
}

}  // namespace

void CheckRequest(const PlotRequest& request, const std::vector<std::string>& columns)
{
  const std::string suffix = SuffixOf(request.file);
  if (request.file != "-" && suffix != "png" && suffix != "svg" && suffix != "pdf") {
    throw PlotError("--plot '" + request.file +
                    "': the name must end in .png, .svg or .pdf, or be '-' for the terminal");
  }
  for (const std::string& axis : request.axes) {
    if (std::ranges::find(columns, axis) != columns.end()) continue;
    throw PlotError(
        fmt::format("--axes: there is no column '{}', only {}", axis, fmt::join(columns, ", ")));
  }
}

std::string GnuplotScript(const PlotRequest& request, const PlotData& data)
{
  return Script(request, data).Text();
}

}  // namespace varno::solve
