#include "solve/command/standard_error.h"

#include <cerrno>
#include <unistd.h>

namespace varno::solve {

void StandardError::Write(std::string_view text)
{
  while (!text.empty()) {
    const ssize_t count = ::write(STDERR_FILENO, text.data(), text.size());
    if (count < 0 && errno != EINTR) return;
    if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace varno::solve
