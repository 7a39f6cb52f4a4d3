#include "solve/command/csv_table.h"

#include <utility>

#include "solve/command/option_value.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Takes records from the front of a text.
class Reader {
 public:
  Reader(std::string_view text, const std::string& name) : rest(text), name(name) {}

  bool AtEnd() const { return rest.empty(); }
  CsvRecord Record();

 private:
  std::string Field();
  std::string QuotedField();

  std::string_view rest;
  const std::string& name;
  int line = 1;
};

CsvRecord Reader::Record()
{
  CsvRecord record{line, {}};
  for (;;) {
    record.fields.push_back(Field());
    const char end = rest.empty() ? '\n' : rest.front();
    if (!rest.empty()) rest.remove_prefix(1);
    if (end == ',') continue;
    ++line;
    return record;
  }
}

/// A field, up to the comma or the end of line behind it.
std::string Reader::Field()
{
  const auto first = rest.find_first_not_of(kBlanks);
  if (first != std::string_view::npos && rest[first] == '"') {
    rest.remove_prefix(first + 1);
    return QuotedField();
  }
  const std::string_view field = rest.substr(0, rest.find_first_of(",\n"));
  rest.remove_prefix(field.size());
  return std::string(Trimmed(field));
}

/// What follows the opening quote; two quotes are one of the text.
std::string Reader::QuotedField()
{
  std::string field;
  const int begin = line;
  for (;;) {
    const auto quote = rest.find('"');
    if (quote == std::string_view::npos)
      throw UsageError(name + ":" + std::to_string(begin) + ": a quote is not closed");
    field += rest.substr(0, quote);
    rest.remove_prefix(quote + 1);
    if (!rest.starts_with('"')) break;
    field += '"';
    rest.remove_prefix(1);
  }
  for (const char character : field) line += character == '\n' ? 1 : 0;
  const std::string behind = Field();
  if (behind.empty()) return field;
  throw UsageError(name + ":" + std::to_string(line) + ": a comma must follow the quote, not '" +
                   behind + "'");
}

}  // namespace

std::vector<CsvRecord> ReadCsv(std::string_view text, const std::string& name)
{
  std::vector<CsvRecord> records;
  for (Reader reader(text, name); !reader.AtEnd();) {
    CsvRecord record = reader.Record();
    if (record.fields.size() > 1 || !record.fields.front().empty())
      records.push_back(std::move(record));
  }
  return records;
}

}  // namespace varno::solve
