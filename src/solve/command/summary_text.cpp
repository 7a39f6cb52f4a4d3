#include "solve/command/summary_text.h"

#include <fmt/format.h>

namespace varno::solve {

namespace {

std::string Counted(std::int64_t count, const char* singular)
{
  return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

}  // namespace

std::string SummaryText(const Summary& summary)
{
  std::string text = fmt::format("{}, order {}, {}\n", Counted(summary.steps, "step"),
                                 summary.order, Counted(summary.bits, "bit"));
  text += Counted(summary.digits, "digit");
  text += summary.verified ? ", verified by a second run" : ", not verified: one run";
  if (!summary.remark.empty()) text += "; " + summary.remark;
  text += fmt::format("\n{:.3g} seconds\n", summary.seconds);
  return text;
}

}  // namespace varno::solve
