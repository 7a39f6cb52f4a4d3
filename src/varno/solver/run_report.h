#pragma once

namespace varno {

/// Lets the prompt of sys/signals.h write the time and the current row of the run.
void ReportRunAtPrompt();

}  // namespace varno
