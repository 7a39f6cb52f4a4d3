#pragma once

#include <string_view>

#include "varno/sys/exit_status.h"

namespace varno {

/// The tags that begin the lines of commentary. The commentary goes to std::clog, that is to
/// standard error, and each line is flushed at its end, so that a run that is ended by a signal
/// loses nothing. Standard output carries results only.
namespace tag {
inline constexpr std::string_view kInfo = "#(INFO) ";
inline constexpr std::string_view kWarning = "#(WARN) ";
inline constexpr std::string_view kError = "#(ERR) ";
inline constexpr std::string_view kSolver = "#(COMP) ";
inline constexpr std::string_view kStiffnessTest = "#(TST) ";
inline constexpr std::string_view kTermDump = "#(DY) ";
inline constexpr std::string_view kDerivativeDump = "#(DER) ";
inline constexpr std::string_view kTreeDump = "#(TREEDUMP) ";
inline constexpr std::string_view kSetting = "#(RES_SET) ";
/// On purpose without "#": the warnings about the settings file have always looked like this.
inline constexpr std::string_view kSettingsFileWarning = "(WARN) ";
}  // namespace tag

/// Ends the process. Every way out but a return from main, a signal and an assertion is here.
[[noreturn]] void Exit(ExitStatus status);

/// Writes the line "#(ERR) TEXT" and ends the process with `status`.
[[noreturn]] void Fail(std::string_view text, ExitStatus status = kFailure);

/// Ends the run with a message and status 1 when something that was written to standard output, and
/// flushed, did not arrive.
void RequireOutput();

/// RequireOutput for everything that was written.
void FinishOutput();

}  // namespace varno
