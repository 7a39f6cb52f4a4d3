#include "solve/command/summary_text.h"

#include <fmt/format.h>

namespace varno::solve {

namespace {

std::string Counted(std::int64_t count, const char* singular)
{
  return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

/// Three digits, or all there are before the point.
std::string SecondsText(double seconds)
{
  return seconds < 100 ? fmt::format("{:.3g}", seconds) : fmt::format("{:.0f}", seconds);
}

}  // namespace

std::string SummaryText(const Summary& summary)
{
  std::string text = fmt::format("{}, order {}, {}\n", Counted(summary.steps, "step"),
                                 summary.order, Counted(summary.bits, "bit"));
  text += Counted(summary.digits, "digit");
  if (!summary.verified) {
    text += ", not verified: one run";
  } else {
    text += summary.rows > 0 ? ", verified by a second run" : ": no row could be verified";
  }
  if (!summary.remark.empty()) text += "; " + summary.remark;
  return text + "\n" + SecondsText(summary.seconds) + " seconds\n";
}

std::string SummaryText(const SweepResult& result, std::int64_t runs, const Options& options,
                        double seconds)
{
  std::string text = Counted(runs, "run");
  if (result.done < runs) text = fmt::format("{} of {}", result.done, text);
  text += fmt::format(", {} failed\n", result.failed);
  text += Counted(options.digits, "digit");
  text += options.check ? ", each run verified by a second one" : ", not verified: one run each";
  return text + "\n" + SecondsText(seconds) + " seconds\n";
}

}  // namespace varno::solve
