// tracelab-cli chart: the bar chart without a window. The runs are loaded
// and processed as export --stage all does; --var is the variable counted.
// Each --run and each --if gives one of the five charts drawn at once: the
// k-th chart counts run k (or the only run given, default 1) under the k-th
// condition (or the only one given); more than one chart ticks "Show
// Multiple Bar Charts". The conditions share their variable, as the form's
// do. --bins is "Number of Bars" (default 10), --min/--max type the range
// and tick its box, --count shows counts instead of percentages, --lines
// draws lines (with --no-bars alone), --title is the main title. --size WxH
// is the surface in pixels at 96 dpi (1 px = 15 twips). --copy writes what
// the copy command puts on the clipboard, -o draws the picture through the
// window's own drawing code.
#include <QGuiApplication>

#include <iostream>
#include <memory>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "core/config_store.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "road/convert_driver.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/bar_chart.h"

namespace tl::cli {
namespace {

struct Condition {
    std::string name, lo, hi;
};

// NAME:LO:HI, split from the right: names may hold colons ("S:", "U:").
bool ParseCondition(const std::string& text, Condition& c) {
    return SplitCondition(text, c.name, c.lo, c.hi) && !c.name.empty() && ValidNumber(c.lo) &&
           ValidNumber(c.hi);
}

}  // namespace

int RunChart(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(
        args, {{"var", "run", "if", "bins", "min", "max", "title", "size", "o", "output", "copy"},
               {"count", "lines", "no-bars"}});
    if (parsed.help) {
        PrintUsage(std::cout, "chart");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("chart", parsed.error);
    const std::vector<std::string> runs = parsed.all["run"];
    const std::vector<std::string> ifs = parsed.all["if"];
    const std::string output = OutputPath(parsed);
    const std::string var = parsed.Value("var");
    if (parsed.positional.empty()) return UsageError("chart", "no run file given");
    if (var.empty()) return UsageError("chart", "no variable to count (--var NAME)");
    for (const std::string& r : runs)
        if (!ValidNumber(r) || GetVal_NI(r) < 1)
            return UsageError("chart", "--run takes a run number from 1");
    std::vector<Condition> conditions;
    for (const std::string& text : ifs) {
        Condition c;
        if (!ParseCondition(text, c)) return UsageError("chart", "--if takes NAME:LO:HI");
        if (!conditions.empty() && c.name != conditions.front().name)
            return UsageError("chart", "the conditions share one variable");
        conditions.push_back(c);
    }
    const size_t charts = std::max<size_t>({runs.size(), conditions.size(), 1});
    if (charts > kBarChartAxes) return UsageError("chart", "at most five charts (--run, --if)");
    if (runs.size() > 1 && conditions.size() > 1 && runs.size() != conditions.size())
        return UsageError("chart", "give one --run, or as many as --if");
    for (const char* option : {"bins", "min", "max"})
        if (parsed.values.count(option) && !ValidNumber(parsed.Value(option)))
            return UsageError("chart", std::string("--") + option + " takes a number");
    int width = 1600, height = 900;
    if (parsed.values.count("size") && !ParseSize(parsed.Value("size"), width, height))
        return UsageError("chart", "--size takes WIDTHxHEIGHT in pixels, 100 to 20000 each");
    if (output.empty() && parsed.Value("copy").empty())
        return UsageError("chart", "nothing to do: give -o OUT or --copy FILE");

    // Text needs Qt's font database: an application without a screen.
    std::unique_ptr<QGuiApplication> app;
    if (!output.empty()) StartGuiForFonts(app);

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    bool allLoaded = false;
    if (const int code = LoadAndProcess("chart", parsed, allLoaded); code != kExitOk) return code;

    for (const std::string& name : {var, conditions.empty() ? var : conditions.front().name})
        if (!KnownVariable("chart", name)) return kExitUsage;
    if (!RunsLoaded("chart", runs)) return kExitFailed;

    BarChart chart;
    chart.Load(1);
    BarChartSettings& s = chart.settings;
    s.DisplayVar = var;
    s.MultiBar = charts > 1 ? 1 : 0;
    s.PercentFreq = parsed.flags.count("count") ? 0 : 1;
    if (parsed.values.count("bins")) s.BinCount = parsed.Value("bins");
    if (parsed.values.count("min")) {
        s.DispVarMin = parsed.Value("min");
        chart.DispVarMin_Change();
    }
    if (parsed.values.count("max")) {
        s.DispVarMax = parsed.Value("max");
        chart.DispVarMax_Change();
    }
    if (parsed.values.count("title")) s.MainTitle = parsed.Value("title");
    if (parsed.flags.count("lines")) s.ShowLines = 1;
    if (parsed.flags.count("no-bars")) {
        s.ShowBars = 0;
        chart.ShowBars_Click();
    }
    if (!conditions.empty()) s.ConstrainVar = conditions.front().name;
    for (size_t k = 0; k < charts; ++k) {
        BarChartAxisSettings& a = s.Axes[k];
        a.AxisEnabled = 1;
        a.AxisRun = runs.empty() ? "1" : runs[runs.size() == 1 ? 0 : k];
        if (!conditions.empty()) {
            const Condition& c = conditions[conditions.size() == 1 ? 0 : k];
            a.ConstrainMin = c.lo;
            chart.ConstrainMin_Change();
            a.ConstrainMax = c.hi;
            chart.ConstrainMax_Change();
        }
    }
    chart.ChartTab_Click(ChartTabs::BarChart);

    if (!output.empty() && !WritePicture("chart", output, width, height, [&](DrawSurface& surface) {
            GraphBox_Paint(chart, surface);
        }))
        return kExitFailed;
    // After the picture: the legends it gave the charts head the copy's
    // columns.
    if (!parsed.Value("copy").empty() &&
        !WriteCopy("chart", parsed.Value("copy"), chart.ClipboardText()))
        return kExitFailed;
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
