#include "varno/sys/signals.h"

#include <cstdint>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/varno/support/runtime_child.h"

#if defined(__x86_64__)
// void LoadByteAt(const void* address): its first instruction, at the address of the function, is
// the load.
asm(R"(
  .text
  .globl LoadByteAt
  .type LoadByteAt, @function
LoadByteAt:
  .cfi_startproc
  movb (%rdi), %al
  ret
  .cfi_endproc
  .size LoadByteAt, .-LoadByteAt
)");
extern "C" void LoadByteAt(const void* address);
#endif

namespace varno {

namespace {

const std::string kPrompt =
    "\n#(SYS) Caught SIGTERM. Dumping values & bailing out \n#(SYS) TIME = 0.5\n"
    "#(SYS) e) exit, c) continue, p) print&continue, x) print&exit\n";

constexpr const char* kRow = "a row\n";

/// Installs the handlers with a report of a run at the time 0.5.
void InstallSignalsWithReport()
{
  SetRunReport({[](std::ostream& out) { out << 0.5; }, [](std::ostream& out) { out << kRow; }});
  InstallSignals();
}

void ReportContinuation(int)
{
  constexpr char kText[] = "SIGCONT\n";
  static_cast<void>(write(STDOUT_FILENO, kText, sizeof kText - 1));
}

/// A run that gets `signal` when its handlers stand and has `answer` for standard input.
ChildOutcome RunWithSignal(int signal, const std::string& answer)
{
  const auto run = [signal] {
    InstallSignalsWithReport();
    std::signal(SIGCONT, ReportContinuation);
    std::raise(signal);
    std::cout << "going on\n";
  };
  return RunInChild(run, answer);
}

// --- The prompt

TEST(CatchTerm, SaysSigtermForSigintToo)
{
  EXPECT_EQ(RunWithSignal(SIGINT, "c").err, kPrompt);
}

TEST(CatchTerm, AsksAgainAtTheNextSignal)
{
  const auto run = [] {
    InstallSignalsWithReport();
    std::raise(SIGTERM);
    std::raise(SIGINT);
    std::raise(SIGTERM);
  };
  const ChildOutcome child = RunInChild(run, "cCe");
  EXPECT_EQ(child.exitStatus, 255);
  EXPECT_EQ(child.err, kPrompt + kPrompt + kPrompt);
}

// --- The answers

struct AnswerRow {
  const char* answer;
  bool goesOn;
  bool writesRow;
  bool raisesContinue;
};

constexpr AnswerRow kAnswers[] = {
    {"c", true, false, false},        {"C", true, false, false},
    {"p", true, true, true},          {"P", true, true, true},
    {"x", false, true, false},        {"X", false, true, false},
    {"e", false, false, false},       {"E", false, false, false},
    {"q", false, false, false},       {"0", false, false, false},
    {"\xff", false, false, false},    {"", false, false, false},  // the end of the input
    {" \t\n\n", false, false, false}, {" \t\n c", true, false, false},
    {"\r\v\fp", true, true, true},    {"cx", true, false, false},  // only one character is read
    {"xc", false, true, false},
};

void ExpectOutcome(const AnswerRow& row, const ChildOutcome& child)
{
  const std::string continued = row.raisesContinue ? "SIGCONT\n" : "";
  EXPECT_EQ(child.out, row.goesOn ? continued + "going on\n" : "");
  EXPECT_EQ(child.exitStatus, row.goesOn ? kBodyReturned : 255);
}

TEST(CatchTerm, WritesTheRowOnStandardErrorWhereTheAnswerAsksForIt)
{
  for (const int signal : {SIGTERM, SIGINT}) {
    for (const AnswerRow& row : kAnswers) {
      SCOPED_TRACE(testing::Message() << "signal " << signal << ", answer \"" << row.answer << '"');
      const ChildOutcome child = RunWithSignal(signal, row.answer);
      EXPECT_EQ(child.err, kPrompt + (row.writesRow ? kRow : ""));
      ExpectOutcome(row, child);
    }
  }
}

TEST(CatchTerm, ShowsNothingOfARunWithoutReport)
{
  const auto run = [] {
    InstallSignals();
    std::raise(SIGTERM);
  };
  const ChildOutcome child = RunInChild(run, "x");
  EXPECT_EQ(child.exitStatus, 255);
  EXPECT_EQ(child.err,
            "\n#(SYS) Caught SIGTERM. Dumping values & bailing out \n#(SYS) TIME = \n"
            "#(SYS) e) exit, c) continue, p) print&continue, x) print&exit\n");
}

// --- Faults

std::vector<std::string> Lines(const std::string& text)
{
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

/// Expects the report of a fault: an empty line, `headline`, the title of the path, `least` entries
/// of the path at least, and nothing else. Returns the entries.
std::vector<std::string> ExpectReport(const ChildOutcome& child, const std::string& headline,
                                      std::size_t least)
{
  EXPECT_EQ(child.exitStatus, 0) << "signal " << child.signal;
  EXPECT_EQ(child.err, "");
  const std::string head = '\n' + headline + "\n#(SYS) [bt] Execution path:\n";
  EXPECT_EQ(child.out.substr(0, head.size()), head);
  if (child.out.size() < head.size()) return {};

  std::vector<std::string> entries = Lines(child.out.substr(head.size()));
  EXPECT_GE(entries.size(), least);
  for (const std::string& entry : entries) EXPECT_EQ(entry.rfind("#(SYS) [bt] ", 0), 0U) << entry;
  return entries;
}

TEST(CatchFault, ReportsTheSignalAloneForAnArithmeticFault)
{
  const auto divideByZero = [] {
    InstallSignals();
    const arith::Mpf one(1.0), zero(0.0);
    arith::Mpf quotient;
    mpf_div(quotient, one, zero);
  };
  ExpectReport(RunInChild(divideByZero), "#(SYS) Got signal 8", 2);
}

#if defined(__x86_64__)

std::string HexText(std::uintptr_t number)
{
  std::ostringstream text;
  text << "0x" << std::hex << number;
  return text.str();
}

void InstallSignalsAndLoadByteAt(std::uintptr_t address)
{
  InstallSignals();
  LoadByteAt(reinterpret_cast<const void*>(address));
}

TEST(CatchFault, ReportsAddressAndInstructionOfAForbiddenAccess)
{
  const std::string instruction = HexText(reinterpret_cast<std::uintptr_t>(&LoadByteAt));
  for (const std::uintptr_t address : {std::uintptr_t{0x1}, std::uintptr_t{0xabc}}) {
    const ChildOutcome child = RunInChild([address] { InstallSignalsAndLoadByteAt(address); });
    const std::vector<std::string> path = ExpectReport(
        child,
        "#(SYS) Got signal 11, faulty address is " + HexText(address) + ", from " + instruction, 2);
    // The faulting instruction stands in place of the frame that delivered the signal.
    ASSERT_FALSE(path.empty());
    EXPECT_NE(path[0].find('[' + instruction + ']'), std::string::npos) << path[0];
  }
}

TEST(CatchFault, ReportsANullAccess)
{
  const ChildOutcome child = RunInChild([] { InstallSignalsAndLoadByteAt(0); });
  ExpectReport(child,
               "#(SYS) Got signal 11, faulty address is (nil), from " +
                   HexText(reinterpret_cast<std::uintptr_t>(&LoadByteAt)),
               2);
}

[[gnu::noinline]] void FaultAtDepth(int depth)
{
  if (depth == 0) {
    InstallSignalsAndLoadByteAt(0);
  } else {
    FaultAtDepth(depth - 1);
  }
  asm volatile("");  // keeps the call from becoming a jump
}

TEST(CatchFault, ShowsFifteenEntriesAtMost)
{
  const ChildOutcome child = RunInChild([] { FaultAtDepth(40); });
  const std::vector<std::string> path =
      ExpectReport(child,
                   "#(SYS) Got signal 11, faulty address is (nil), from " +
                       HexText(reinterpret_cast<std::uintptr_t>(&LoadByteAt)),
                   15);
  EXPECT_EQ(path.size(), 15U);
}

#endif

// --- Installation

TEST(InstallSignals, LeavesTheDefaultActionToARunWithoutIt)
{
  const ChildOutcome child = RunInChild([] { std::raise(SIGTERM); }, "c");
  EXPECT_EQ(child.signal, SIGTERM);
  EXPECT_EQ(child.out, "");
  EXPECT_EQ(child.err, "");
}

TEST(InstallSignals, BlocksNoSignalAndRestartsCallsForAFaultReport)
{
  const auto showActions = [] {
    InstallSignals();
    for (const int signal : {SIGSEGV, SIGFPE}) {
      struct sigaction action {};
      sigaction(signal, nullptr, &action);
      std::cout << ((action.sa_flags & SA_RESTART) != 0);
      for (int other = 1; other < SIGRTMAX; ++other) {
        if (sigismember(&action.sa_mask, other) == 1) std::cout << " blocks " << other;
      }
    }
  };
  EXPECT_EQ(RunInChild(showActions).out, "11");
}

}  // namespace
}  // namespace varno
