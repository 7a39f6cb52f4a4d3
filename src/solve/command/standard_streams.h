#pragma once

namespace varno::solve {

/// Fills closed standard streams, so that no other file gets their numbers and with it what was
/// meant for them. Reading and writing them still fails. False when the system has no /dev/null.
bool FillStandardStreams();

}  // namespace varno::solve
