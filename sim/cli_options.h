// Command line of lumora-sim.
#pragma once

#include "sim/instrument.h"

#include <string>
#include <vector>

namespace lumora::sim {

struct CliOptions {
    Options instrument;
    std::string link;    // symlink to the pty slave, if given
    std::string control; // UNIX socket for control lines, if given
    std::string log;     // JSON-lines log of received bytes, if given
    bool help = false;
};

// Parses the arguments after the program name. Throws std::invalid_argument with a message for the user.
CliOptions parse_cli(const std::vector<std::string>& args);

std::string usage();

} // namespace lumora::sim
