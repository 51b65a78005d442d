// The subcommands of tracelab-cli. Each lives in its own command_<name>.cpp,
// takes the arguments behind its name and returns the exit code.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tl::cli {

struct Command {
    const char* name;
    const char* synopsis;  // the usage line behind "tracelab-cli "
    const char* summary;
    int (*run)(const std::vector<std::string>& args);
};

int RunInfo(const std::vector<std::string>& args);

// The table main dispatches on; a new subcommand adds one line here.
inline const Command kCommands[] = {
    {"info",
     "info [--config-dir DIR] [--family hx40|mq7|sv63|sw63] [--vehicle car|kart|bike|boat] "
     "FILE.run...",
     "Load run files as the program does (not processed) and print one line per run.", RunInfo},
};

// Writes the usage of one command, or of all when name is empty.
void PrintUsage(std::ostream& out, const std::string& name = "");

}  // namespace tl::cli
