// tracelab-cli graph: the XY graph without a window. The runs are loaded and
// processed as export --stage all does (--laps places the automatic lap
// marker first); each --y fills and activates the next of the five slots,
// --run gives each slot's run in the same order (default 1), --x the X
// variable of every slot (default the name of slot 1). With one run for all
// slots the slots share slot 0's X axis (MultipleXAxis off); with different
// runs each keeps its own, with the same X settings, as a user sets the form
// to overlay runs. --xmin/--xmax/--ymin/--ymax type the limit into every slot
// and tick its box; --if NAME:LO:HI sets every slot's condition and the
// master switch; --points N is FastPlot with N points, --points all FastPlot
// off. --size WxH is the surface in pixels at 96 dpi (1 px = 15 twips), which
// decides the tick counts. --axes prints a line per active slot after
// ReGenerateGraph, --copy writes what the copy command puts on the clipboard,
// -o draws the picture through the window's own drawing code.
#include <QGuiApplication>

#include <cstdio>
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
#include "views/graph_model.h"
#include "views/graph_paint.h"

namespace tl::cli {
namespace {

std::string Number(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.9g", v);
    return buf;
}

}  // namespace

int RunGraph(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(args, {{"y", "run", "x", "points", "xmin", "xmax", "ymin",
                                               "ymax", "if", "size", "o", "output", "copy"},
                                              {"laps", "axes"}});
    if (parsed.help) {
        PrintUsage(std::cout, "graph");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("graph", parsed.error);
    const std::vector<std::string> ys = parsed.all["y"];
    const std::vector<std::string> runs = parsed.all["run"];
    const std::string output = OutputPath(parsed);
    if (parsed.positional.empty()) return UsageError("graph", "no run file given");
    if (ys.empty()) return UsageError("graph", "no variable to plot (--y NAME)");
    if (ys.size() > kGraphSlots) return UsageError("graph", "at most five --y variables");
    if (runs.size() > ys.size()) return UsageError("graph", "more --run than --y");
    for (const std::string& r : runs)
        if (!ValidNumber(r) || GetVal_NI(r) < 1)
            return UsageError("graph", "--run takes a run number from 1");
    int width = 1600, height = 900;
    if (parsed.values.count("size") && !ParseSize(parsed.Value("size"), width, height))
        return UsageError("graph", "--size takes WIDTHxHEIGHT in pixels, 100 to 20000 each");
    std::string points = parsed.Value("points");
    if (!points.empty() && points != "all" && (!ValidNumber(points) || GetVal_NI(points) < 1))
        return UsageError("graph", "--points takes a number or all");
    std::string condition = parsed.Value("if"), condName, condLo, condHi;
    if (!condition.empty() && !SplitCondition(condition, condName, condLo, condHi))
        return UsageError("graph", "--if takes NAME:LO:HI");
    if (output.empty() && !parsed.flags.count("axes") && parsed.Value("copy").empty())
        return UsageError("graph", "nothing to do: give -o OUT, --copy FILE or --axes");

    // Text needs Qt's font database: an application without a screen.
    std::unique_ptr<QGuiApplication> app;
    if (!output.empty()) StartGuiForFonts(app);

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    bool allLoaded = false;
    if (const int code = LoadAndProcess("graph", parsed, allLoaded); code != kExitOk) return code;

    const std::string x =
        parsed.values.count("x") ? parsed.Value("x") : Catalogue().RunVars[1].Name;
    for (const std::string& name : ys)
        if (!KnownVariable("graph", name)) return kExitUsage;
    if (!KnownVariable("graph", x)) return kExitUsage;
    if (!condName.empty() && !KnownVariable("graph", condName)) return kExitUsage;
    if (!RunsLoaded("graph", runs)) return kExitFailed;

    GraphModel g;
    g.Load(1);
    bool oneRun = true;
    for (const std::string& r : runs) oneRun = oneRun && GetVal_NI(r) == GetVal_NI(runs[0]);
    g.settings.MultipleXAxis = oneRun ? 0 : 1;
    if (points == "all")
        g.settings.FastPlot = 0;
    else if (!points.empty()) {
        g.settings.FastPlot = 1;
        g.settings.MaximumPoints = points;
    }
    if (!condName.empty()) g.settings.LimitVariables = 1;
    for (size_t k = 0; k < ys.size(); ++k) {
        GraphSlotSettings& slot = g.settings.Slots[k];
        slot.SelYAxis = ys[k];
        g.SelYAxis_Click(static_cast<int>(k));
        slot.AxisRun = k < runs.size() ? runs[k] : (runs.empty() ? "1" : runs[0]);
        if (!oneRun && k >= runs.size()) slot.AxisRun = "1";
    }
    for (GraphSlotSettings& slot : g.settings.Slots) {
        slot.SelXAxis = x;
        auto type = [&](const char* option, std::string& text, int16_t& box) {
            if (!parsed.values.count(option)) return;
            text = parsed.Value(option);
            box = 1;
        };
        type("xmin", slot.MinXAxis, slot.AutoMinX);
        type("xmax", slot.MaxXAxis, slot.AutoMaxX);
        type("ymin", slot.MinYAxis, slot.AutoMinY);
        type("ymax", slot.MaxYAxis, slot.AutoMaxY);
        if (!condName.empty()) {
            slot.LimitVar = condName;
            slot.DisplayIf = 1;
            slot.LimitVarMin = condLo;
            slot.LimitVarMax = condHi;
        }
    }
    g.SetTickCounts(width * 15.0, height * 15.0);
    g.ReGenerateGraph();

    if (parsed.flags.count("axes")) {
        for (int s = 0; s < kGraphSlots; ++s) {
            if (!g.SlotActive(s)) continue;
            const GraphAxis& a = g.axis[s];
            std::cout << "slot " << s << " run=" << g.settings.Slots[s].AxisRun
                      << " x=" << Number(a.XMin) << ".." << Number(a.XMax) << " xticks=" << a.XTicks
                      << " y=" << Number(a.YMin) << ".." << Number(a.YMax) << " yticks=" << a.YTicks
                      << " points=" << a.PointCount << '\n';
        }
    }
    if (!parsed.Value("copy").empty() &&
        !WriteCopy("graph", parsed.Value("copy"), g.ClipboardText()))
        return kExitFailed;
    if (!output.empty() && !WritePicture("graph", output, width, height,
                                         [&](DrawSurface& s) { Graphbox_Paint(g, s); }))
        return kExitFailed;
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
