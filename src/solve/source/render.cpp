#include "solve/source/render.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <vector>

#include "solve/source/utf8.h"

namespace varno::solve {

namespace {

/// After so many errors the others are only counted.
constexpr int kMaxErrors = 100;

/// Of a long line only this many characters before and after the beginning of the place are shown.
constexpr std::size_t kMaxBefore = 80;
constexpr std::size_t kMaxAfter = 80;
constexpr std::string_view kCut = "...";

/// A line as it is shown, and what stands under it.
struct Excerpt {
  std::string line;
  std::string marks;
};

/// The bytes of a text from the last `count` characters on.
std::string_view LastCharacters(std::string_view text, std::size_t count)
{
  std::size_t surplus = CountCharacters(text);
  for (; surplus > count; --surplus) text.remove_prefix(CharacterBytes(text));
  return text;
}

/// Appends the first characters of a text. What cannot be shown becomes a question mark, so that
/// no byte of a damaged file reaches the terminal.
void AppendShown(std::string& line, std::string_view text, std::size_t characters)
{
  for (; !text.empty() && characters > 0; --characters) {
    const std::size_t bytes = CharacterBytes(text);
    if (text.front() == '\t') {
      line += '\t';
    } else if (IsPrintable(text)) {
      line += text.substr(0, bytes);
    } else {
      line += '?';
    }
    text.remove_prefix(bytes);
  }
}

/// Blanks as wide as a text; tabs stay, so that both lines are indented alike.
std::string Blanks(std::string_view text)
{
  std::string blanks;
  for (; !text.empty(); text.remove_prefix(CharacterBytes(text))) {
    blanks += text.front() == '\t' ? '\t' : ' ';
  }
  return blanks;
}

Excerpt MakeExcerpt(Place place, const Sources& sources)
{
  const std::string_view line = sources.Line(place);
  const auto lineBegin = static_cast<std::size_t>(line.data() - sources.Text(place.source).data());
  const std::size_t begin = std::min(place.begin - lineBegin, line.size());
  const std::size_t end = std::min(place.end - lineBegin, line.size());

  const std::string_view before = LastCharacters(line.substr(0, begin), kMaxBefore);
  const std::string_view after = line.substr(begin);
  const std::size_t marked = end > begin ? CountCharacters(line.substr(begin, end - begin)) : 1;

  Excerpt excerpt;
  if (before.size() < begin) {
    excerpt.line = kCut;
    excerpt.marks.assign(kCut.size(), ' ');
  }
  AppendShown(excerpt.line, before, kMaxBefore);
  AppendShown(excerpt.line, after, kMaxAfter);
  if (CountCharacters(after) > kMaxAfter) excerpt.line += kCut;

  excerpt.marks += Blanks(before);
  excerpt.marks += '^';
  excerpt.marks.append(std::min(marked, kMaxAfter) - 1, '~');
  return excerpt;
}

/// Messages quote names and tokens, which may be long or hold odd bytes.
std::string Shown(std::string_view text)
{
  std::string shown;
  AppendShown(shown, text, text.size());
  return shown;
}

std::string_view NameOf(Severity severity)
{
  return severity == Severity::kError ? "error" : "note";
}

/// An error with the notes made right after it, which belong to it; or a note by itself.
struct Group {
  std::size_t first;
  std::size_t count;
};

std::vector<Group> GroupsInOrderOfText(const std::vector<Diagnostic>& all)
{
  std::vector<Group> groups;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool belongsToError = !groups.empty() && all[i].severity == Severity::kNote &&
                                all[groups.back().first].severity == Severity::kError;
    if (belongsToError) {
      ++groups.back().count;
    } else {
      groups.push_back({i, 1});
    }
  }
  std::stable_sort(groups.begin(), groups.end(), [&all](const Group& a, const Group& b) {
    const Place& left = all[a.first].place;
    const Place& right = all[b.first].place;
    return std::tie(left.source, left.begin) < std::tie(right.source, right.begin);
  });
  return groups;
}

}  // namespace

std::string Render(const Diagnostic& diagnostic, const Sources& sources)
{
  const Position position = sources.Begin(diagnostic.place);
  const Excerpt excerpt = MakeExcerpt(diagnostic.place, sources);

  std::string text = sources.Name(diagnostic.place.source);
  text += ':' + std::to_string(position.line) + ':' + std::to_string(position.column) + ": ";
  text += NameOf(diagnostic.severity);
  text += ": " + Shown(diagnostic.message) + '\n';
  text += "  " + excerpt.line + '\n';
  text += "  " + excerpt.marks + '\n';
  if (!diagnostic.hint.empty()) text += "  hint: " + Shown(diagnostic.hint) + '\n';
  return text;
}

std::string Render(const Diagnostics& diagnostics, const Sources& sources)
{
  const std::vector<Diagnostic>& all = diagnostics.All();
  std::string text;
  int errors = 0;
  for (const Group& group : GroupsInOrderOfText(all)) {
    if (all[group.first].severity == Severity::kError && ++errors > kMaxErrors) continue;
    for (std::size_t i = 0; i < group.count; ++i) text += Render(all[group.first + i], sources);
  }
  if (errors > kMaxErrors)
    text += std::to_string(errors - kMaxErrors) + " more errors are not shown\n";
  return text;
}

}  // namespace varno::solve
