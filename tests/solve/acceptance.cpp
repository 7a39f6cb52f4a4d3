// Reads all files of varno's language in the given folders as problems of varno-solve, and compares
// those that are not accepted, with their messages, with a list: the differences between the two
// languages.
//
//     acceptance LIST FOLDER...     status 0 when the list is right
//     acceptance --write LIST FOLDER...

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "solve/language/parse.h"
#include "solve/model/build_model.h"

namespace {

namespace fs = std::filesystem;
using namespace varno::solve;

std::string ReadFile(const fs::path& path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A case of varno whose expected status is 3 holds a text that varno does not accept either.
bool IsRejectedByVarno(const fs::path& path)
{
  const std::string status = ReadFile(path.parent_path() / "status");
  return status.starts_with("3");
}

/// The folder and the name of a file stand for it, so that folders can move.
std::string KeyOf(const fs::path& path)
{
  return (path.parent_path().filename() / path.filename()).string();
}

std::vector<std::string> Messages(const fs::path& path)
{
  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add(KeyOf(path), ReadFile(path));
  const Syntax syntax = ParseProblem(sources, source, diagnostics);
  BuildModel(syntax, {}, sources, diagnostics);

  std::vector<std::string> messages;
  for (const Diagnostic& diagnostic : diagnostics.All()) {
    if (diagnostic.severity != Severity::kError) continue;
    const Position position = sources.Begin(diagnostic.place);
    messages.push_back(KeyOf(path) + ":" + std::to_string(position.line) + ":" +
                       std::to_string(position.column) + ": " + diagnostic.message);
  }
  return messages;
}

std::set<std::string> AllMessages(const std::vector<fs::path>& folders, int& files)
{
  std::set<std::string> all;
  for (const fs::path& folder : folders) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.path().extension() != ".varno" || IsRejectedByVarno(entry.path())) continue;
      ++files;
      for (const std::string& message : Messages(entry.path())) all.insert(message);
    }
  }
  return all;
}

std::set<std::string> ReadLines(const fs::path& path)
{
  std::set<std::string> lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && !line.starts_with('#')) lines.insert(line);
  }
  return lines;
}

bool Compare(const std::set<std::string>& expected, const std::set<std::string>& found)
{
  std::vector<std::string> missing, surplus;
  std::set_difference(expected.begin(), expected.end(), found.begin(), found.end(),
                      std::back_inserter(missing));
  std::set_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                      std::back_inserter(surplus));
  for (const std::string& line : missing) std::cout << "- " << line << '\n';
  for (const std::string& line : surplus) std::cout << "+ " << line << '\n';
  return missing.empty() && surplus.empty();
}

}  // namespace

int main(int argc, char** argv)
{
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool write = !arguments.empty() && arguments[0] == "--write";
  if (write) arguments.erase(arguments.begin());
  if (arguments.size() < 2) {
    std::cerr << "usage: acceptance [--write] LIST FOLDER...\n";
    return 2;
  }

  int files = 0;
  const std::set<std::string> found = AllMessages({arguments.begin() + 1, arguments.end()}, files);
  if (files == 0) {
    std::cerr << "no files\n";
    return 1;
  }
  if (write) {
    std::ofstream list(arguments[0]);
    list << "# Files that varno accepts and varno-solve does not, with the reasons; written by "
            "acceptance --write\n";
    for (const std::string& line : found) list << line << '\n';
    return list.good() ? 0 : 1;
  }
  std::cout << files << " files\n";
  return Compare(ReadLines(arguments[0]), found) ? 0 : 1;
}
