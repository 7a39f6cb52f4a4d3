#include "solve/rows/csv_field.h"

namespace varno::solve {

void AppendCsvField(std::string& line, std::string_view field)
{
  if (field.find_first_of(" ,\"\r\n") == std::string_view::npos) {
    line += field;
    return;
  }
  line += '"';
  for (const char character : field) {
    if (character == '"') line += '"';
    line += character;
  }
  line += '"';
}

}  // namespace varno::solve
