#include "solve/rows/json_writer.h"

#include <nlohmann/json.hpp>

namespace varno::solve {

namespace {

/// A string of JSON with its quotes; bytes that are no UTF-8 become U+FFFD.
std::string Quoted(const std::string& text)
{
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

JsonWriter::JsonWriter(TextSink& sink, const std::vector<std::string>& columns,
                       const LeadingFields& leading)
    : sink(sink)
{
  for (std::size_t i = 0; i < leading.names.size(); ++i)
    fields += Quoted(leading.names[i]) + ':' + Quoted(leading.texts[i]) + ',';
  begin = "{" + fields + "\"t\":\"";
  for (const std::string& column : columns) keys.push_back("\"," + Quoted(column) + ":\"");
}

void JsonWriter::Write(std::string_view time, std::span<const std::string_view> values)
{
  line = begin;
  AppendRow(time, values);
}

void JsonWriter::WriteEvent(std::string_view name, std::string_view time,
                            std::span<const std::string_view> values)
{
  line = "{\"event\":" + Quoted(std::string(name)) + ',' + begin.substr(1);
  AppendRow(time, values);
}

void JsonWriter::WritePeriod(std::string_view variable, std::string_view period)
{
  line = "{\"period\":\"" + std::string(period) + "\"," + fields +
         "\"of\":" + Quoted(std::string(variable)) + "}\n";
  sink.Write(line);
}

/// Ends the line with the fields behind what it begins with, and writes it.
void JsonWriter::AppendRow(std::string_view time, std::span<const std::string_view> values)
{
  line += time;
  for (std::size_t i = 0; i < values.size(); ++i) {
    line += keys[i];
    line += values[i];
  }
  line += "\"}\n";
  sink.Write(line);
}

}  // namespace varno::solve
