// The real-time front end: runs an Instrument on the wall clock behind a pseudo-terminal, with control
// lines from stdin and a UNIX socket.
#pragma once

#include "sim/cli_options.h"

namespace lumora::sim {

// Sets everything up from the options, prints the terminal's path as the first line of stdout and
// serves until a byte arrives on `stop_fd` (the signal handler's pipe). Returns the exit status; set-up
// failures are told on stderr.
int serve(const CliOptions& options, int stop_fd);

} // namespace lumora::sim
