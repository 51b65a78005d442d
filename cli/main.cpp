// tracelab-cli: the engine's jobs from the command line.
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "cli/commands.h"

namespace tl::cli {

void PrintUsage(std::ostream& out, const std::string& name) {
    out << "Usage:\n";
    for (const Command& c : kCommands)
        if (name.empty() || name == c.name) out << "  tracelab-cli " << c.synopsis << '\n';
    if (name.empty()) out << "  tracelab-cli --help\n";
    out << '\n';
    for (const Command& c : kCommands)
        if (name.empty() || name == c.name) out << "  " << c.name << ": " << c.summary << '\n';
    out << "\nOptions shared by all commands:\n"
           "  --config-dir DIR  configuration root: DIR/BuildOptions.cfg and DIR/Configuration/,\n"
           "                    created with the shipped defaults when absent\n"
           "  --family F        hardware family hx40, mq7, sv63 or sw63 (else BuildOptions.cfg)\n"
           "  --vehicle V       vehicle car, kart, bike or boat (else BuildOptions.cfg)\n"
           "\nExit status: 0 done, 1 a file was refused or the engine did not start, "
           "2 usage error.\n";
}

}  // namespace tl::cli

int main(int argc, char** argv) {
    using namespace tl::cli;
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        PrintUsage(std::cerr);
        return kExitUsage;
    }
    const std::string name = args.front();
    if (name == "--help" || name == "-h" || name == "help") {
        PrintUsage(std::cout);
        return kExitOk;
    }
    for (const Command& c : kCommands) {
        if (name == c.name) return c.run(std::vector<std::string>(args.begin() + 1, args.end()));
    }
    std::cerr << "tracelab-cli: unknown command " << name << "\n\n";
    PrintUsage(std::cerr);
    return kExitUsage;
}
