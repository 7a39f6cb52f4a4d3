#include "solve/plot/gnuplot_script.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>
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

/// So many characters fit along the side of a picture, and below it.
constexpr std::size_t kCharactersOfHeight = 48, kCharactersOfWidth = 90;

/// The same for a label, broken at blanks into lines that fit: gnuplot would cut it off.
std::string QuotedLines(const std::string& text, std::size_t width)
{
  std::string quoted, rest = text;
  while (rest.size() > width) {
    auto blank = rest.rfind(' ', width);
    if (blank == std::string::npos || blank == 0) blank = rest.find(' ', 1);
    if (blank == std::string::npos) break;
    quoted += Quoted(rest.substr(0, blank)) + ".\"\\n\".";
    rest.erase(0, blank + 1);
  }
  return quoted + Quoted(rest);
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
  bool IsMap() const
  {
    return request.axes.size() > 2 && IsOverRuns() && ys.front() < data.sweptCount &&
           x != ys.front() && data.HasSingleRows() && request.file != "-";
  }
  void ChooseColumns();
  void AddData();
  void AddRows(const PlottedRun& run);
  void AddMap();
  void AddCurves(const std::string& block, const std::string& runTitle);
  void AddLabels();
  const char* Style() const;
  void AddPlot();

  const PlotRequest& request;
  const PlotData& data;
  std::size_t x = 0;
  std::vector<std::size_t> ys;  // each is a curve
  std::size_t z = 0;            // when there are three axes
  std::vector<Curve> curves;
  bool isImage = false;  // of a map
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
  if (IsMap()) return AddMap();
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

/// Columns x, y and z. An image must have all its points, so that runs that are not there become
/// NaN; where they would be most of them, as for points anywhere, or all lie in a line, it is none.
void Script::AddMap()
{
  std::map<double, std::map<double, double>> rows;
  std::set<double> columns;
  for (const PlottedRun& run : data.runs) {
    rows[run.values[ys.front()]][run.values[x]] = run.values[z];
    columns.insert(run.values[x]);
  }
  isImage =
      rows.size() > 1 && columns.size() > 1 && rows.size() * columns.size() <= 2 * data.runs.size();
  text += "$runs << END\n";
  for (const auto& [rowY, row] : rows) {
    for (const double columnX : columns) {
      const auto found = row.find(columnX);
      if (found != row.end() || isImage) {
        text += fmt::format("{:.17g} {:.17g} {:.17g}\n", columnX, rowY,
                            found == row.end() ? std::nan("") : found->second);
      }
    }
  }
  text += "END\n";
  curves.push_back({"$runs", {0, 1, 2}, ""});
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
  const bool isTerminal = request.file == "-";
  const std::size_t width =
      isTerminal ? static_cast<std::size_t>(request.terminalWidth) * 3 / 4 : kCharactersOfWidth;
  std::string title = request.title.empty() ? "" : QuotedLines(request.title, width);
  const std::string& xName = request.xLabel.empty() ? data.columns[x] : request.xLabel;
  std::string yName = request.yLabel;
  if (yName.empty() && ys.size() == 1) yName = data.columns[ys.front()];
  if (!yName.empty() && isTerminal) {
    // A terminal has no room for text at the side.
    title += (title.empty() ? "" : ".\"\\n\".") + QuotedLines(yName, width);
  }
  if (!title.empty()) text += "set title " + title + "\n";
  text += "set xlabel " + QuotedLines(xName, width) + "\n";
  if (!yName.empty() && !isTerminal)
    text += "set ylabel " + QuotedLines(yName, kCharactersOfHeight) + "\n";
  if (request.axes.size() > 2)
    text += (IsMap() ? "set cblabel " : "set zlabel ") + Quoted(data.columns[z]) + "\n";
  text += curves.size() > 1 && curves.size() <= kMostKeys ? "set key outside\n" : "set key off\n";
  text +=
      IsMap() ? "set autoscale xfix\nset autoscale yfix\n" : "set grid\nset xyplane relative 0\n";
}

const char* Script::Style() const
{
  if (IsMap()) return isImage ? "image" : "points pointtype 5 pointsize 1 palette";
  return !IsOverRuns()          ? "lines"
         : data.HasSingleRows() ? "linespoints pointtype 7 pointsize 0.4"
                                : "points pointtype 7 pointsize 0.2";
}

void Script::AddPlot()
{
  std::string separator = request.axes.size() > 2 && !IsMap() ? "splot " : "plot ";
  for (const Curve& curve : curves) {
    std::string columns;
    for (const std::size_t column : curve.columns)
      columns += (columns.empty() ? "" : ":") + std::to_string(column + 1);
    text += fmt::format("{}{} using {} with {} title {}", separator, curve.block, columns, Style(),
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
