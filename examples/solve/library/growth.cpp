// Growth towards a limit, y' = rate*y*(1 - y), at the rate given on the command line: prints a
// table with 25 digits, and how large the last value is as a double.

#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include <varno/solve.h>

int main(int argc, char** argv)
{
  using namespace varno::solve;
  try {
    Problem problem = Problem::Parse("rate = 1; y' = rate*y*(1 - y) & 1/10;", "growth");
    if (argc > 1) problem.Set("rate=" + std::string(argv[1]));

    Solution solution(problem, {.to = "10", .rows = RowsEvery{"2"}, .digits = 25});
    std::cout << "# t";
    for (const std::string& name : solution.Columns()) std::cout << ' ' << name;
    std::cout << '\n';
    double last = 0;
    while (const std::optional<Row> row = solution.Next()) {
      std::cout << row->time.Text();
      for (const Value& value : row->values) std::cout << ' ' << value.Text();
      std::cout << '\n';
      last = row->values.front().ToDouble();
    }
    std::cout << "# " << last << (solution.Summarise().verified ? ", verified\n" : "\n");
  } catch (const std::exception& error) {
    // Of a wrong problem the message shows the place; of a run that ended early how far it got.
    std::cerr << error.what() << '\n';
    return 1;
  }
}
