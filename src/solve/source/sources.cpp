#include "solve/source/sources.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "solve/source/utf8.h"

namespace varno::solve {

std::uint32_t Sources::Add(std::string name, std::string text)
{
  if (text.size() > kMaxSourceBytes) throw std::length_error(name + ": the text is too long");
  Entry entry{std::move(name), std::move(text), {0}};
  for (std::size_t i = 0; i < entry.text.size(); ++i) {
    if (entry.text[i] == '\n') entry.lineStarts.push_back(static_cast<std::uint32_t>(i + 1));
  }
  entries.push_back(std::move(entry));
  return static_cast<std::uint32_t>(entries.size() - 1);
}

const std::string& Sources::Name(std::uint32_t source) const
{
  return entries.at(source).name;
}

const std::string& Sources::Text(std::uint32_t source) const
{
  return entries.at(source).text;
}

std::string_view Sources::Text(Place place) const
{
  return std::string_view(Text(place.source)).substr(place.begin, place.end - place.begin);
}

std::size_t Sources::LineIndex(Place place) const
{
  const std::vector<std::uint32_t>& starts = entries.at(place.source).lineStarts;
  return static_cast<std::size_t>(std::upper_bound(starts.begin(), starts.end(), place.begin) -
                                  starts.begin()) -
         1;
}

Position Sources::Begin(Place place) const
{
  const std::size_t line = LineIndex(place);
  const std::uint32_t start = entries[place.source].lineStarts[line];
  const std::string_view before =
      std::string_view(Text(place.source)).substr(start, place.begin - start);
  return {static_cast<int>(line + 1), static_cast<int>(CountCharacters(before) + 1)};
}

std::string_view Sources::Line(Place place) const
{
  const std::uint32_t start = entries.at(place.source).lineStarts[LineIndex(place)];
  const std::string_view rest = std::string_view(Text(place.source)).substr(start);
  std::string_view line = rest.substr(0, rest.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace varno::solve
