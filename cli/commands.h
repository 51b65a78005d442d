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
int RunExport(const std::vector<std::string>& args);
int RunExportRaw(const std::vector<std::string>& args);
int RunLapTable(const std::vector<std::string>& args);
int RunGraph(const std::vector<std::string>& args);
int RunMap(const std::vector<std::string>& args);
int RunChart(const std::vector<std::string>& args);
int RunPerformance(const std::vector<std::string>& args);
int RunLogger(const std::vector<std::string>& args);

// The table main dispatches on; a new subcommand adds one line here.
inline const Command kCommands[] = {
    {"info",
     "info [--config-dir DIR] [--family hx40|mq7|sv63|sw63] [--vehicle car|kart|bike|boat] "
     "FILE.run...",
     "Load run files as the program does (not processed) and print one line per run.", RunInfo},
    {"export",
     "export [--config-dir DIR] [--family F] [--vehicle V] [--all-vars] [--stage convert|all] "
     "[--step S] [--run N] [--laps] [--auto-sectors N] FILE.run... -o OUT.csv",
     "Load and convert the runs, then write the processed CSV export of run N (default 1) "
     "every S seconds (default 0.01); --stage convert skips the derived channels, --all-vars "
     "selects every available variable first (stored in the configuration, as \"Set All\"); "
     "--laps places the lap marker as laps does, --auto-sectors N also the sectors, so that "
     "the time slip columns are filled.",
     RunExport},
    {"export-raw",
     "export-raw [--config-dir DIR] [--family F] [--vehicle V] FILE.run... -o OUT.csv",
     "Load the runs (not processed) and write the raw CSV export of all of them.", RunExportRaw},
    {"laps", "laps [--config-dir DIR] [--family F] [--vehicle V] [--auto-sectors N] FILE.run...",
     "Load and process the runs, place the lap marker on run 1 if none exists (and with "
     "--auto-sectors N, N sectors, 2 to 10), and print one line per lap, \"run <n> lap <k> "
     "time=<s>\" with \" s<j>=<s>\" for each sector the lap holds, and per run \"run <n> "
     "fastest lap <k> time=<s>\" and, where the sectors tile the lap, \"run <n> ideal lap "
     "time=<s>\" (the best time of each sector added up).",
     RunLapTable},
    {"graph",
     "graph [--config-dir DIR] [--family F] [--vehicle V] FILE.run... --y NAME [--y NAME ...] "
     "[--run N ...] [--x NAME] [--points N|all] [--xmin V] [--xmax V] [--ymin V] [--ymax V] "
     "[--if NAME:LO:HI] [--laps] [--size WxH] [-o OUT.png|OUT.svg|OUT.pdf] [--copy OUT.txt] "
     "[--axes]",
     "Load and process the runs and draw the XY graph of up to five variables, each from its "
     "run, as the graph window draws it: into a PNG, SVG or PDF file (-o), its data as the "
     "copy command puts it on the clipboard (--copy), and one line per slot with its ranges, "
     "ticks and points (--axes).",
     RunGraph},
    {"map",
     "map [--config-dir DIR] [--family F] [--vehicle V] FILE.run... [--var NAME] [--runs N,...] "
     "[--laps] [--auto-sectors N] [--size WxH] -o OUT.png|OUT.svg|OUT.pdf",
     "Load and process the runs and draw the track map as its window draws it, the whole track "
     "in view: the paths of the runs given by --runs (default 1), coloured by the variable "
     "--var (default \"No Color Coding\"), with the track markers (--laps places the lap "
     "marker first, --auto-sectors N also the sectors, whose names stand on the map), the colour "
     "strip and the scale bar.",
     RunMap},
    {"chart",
     "chart [--config-dir DIR] [--family F] [--vehicle V] FILE.run... --var NAME [--run N ...] "
     "[--if NAME:LO:HI ...] [--bins N] [--min V] [--max V] [--count] [--lines] [--no-bars] "
     "[--title T] [--size WxH] [-o OUT.png|OUT.svg|OUT.pdf] [--copy OUT.txt]",
     "Load and process the runs and draw the bar chart of a variable as its window draws it: "
     "how its samples spread over --bins equal bins (default 10) between --min and --max "
     "(default the lowest and highest value of all runs), in percent (--count: samples), one "
     "chart per --run and per --if condition (up to five at once, sharing the condition's "
     "variable); into a PNG, SVG or PDF file (-o) and its bins as the copy puts them on the "
     "clipboard (--copy).",
     RunChart},
    {"performance",
     "performance [--config-dir DIR] [--family F] [--vehicle V] FILE.run... [--run N] "
     "[--start S] [--end S] [--trigger G] [--mph] [--feet] [--assembled]",
     "Load and process the runs and print the calculated performance table of run N (default "
     "1) between --start and --end seconds (default the whole run): the best times and the best "
     "distances between every two speeds 10 apart, each grid as its copy puts it on the "
     "clipboard (tab between cells, CR LF after each row), then the summary of the "
     "SummaryPerformance.cfg template; --trigger is the launch acceleration in g (default 0.2), "
     "--mph, --feet and --assembled choose the other unit or the assembled timings.",
     RunPerformance},
    {"logger",
     "logger [--config-dir DIR] [--family F] [--vehicle V] --port DEVICE info|list|"
     "download K [K ...] [-o DIR]|erase --yes",
     "Talk to a logger on a serial device: info prints its family byte and serial number, "
     "list its run directory (\"run <k> bytes=<frames> ...\" per run, then \"runs <count>\"), "
     "download fetches runs K as the download form does and saves each as a .run file in DIR "
     "(default the configured RunPath), erase clears the logger's memory.",
     RunLogger},
};

// Writes the usage of one command, or of all when name is empty.
void PrintUsage(std::ostream& out, const std::string& name = "");

}  // namespace tl::cli
