// tracelab-cli map: the track map without a window. The runs are loaded and
// processed as graph does (--laps places the automatic lap marker first);
// --runs gives the panels' runs (default 1, RunsDisplayed their count), --var
// the colour variable (MapColorVar, default "No Color Coding"). The whole
// track is shown and drawn through the map's own ReDraw; below the map stand
// the colour strip with its two ends' values and the scale bar with its
// label, as the window shows them beside the map.
#include <QGuiApplication>

#include <iostream>
#include <memory>
#include <sstream>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "core/support.h"
#include "platform/render/painter_surface.h"
#include "road/convert_driver.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/track_map.h"

namespace tl::cli {
namespace {

// A box of another surface, as a surface of its own: the strips beside the
// map drawn into the same picture.
class BoxSurface : public DrawSurface {
  public:
    BoxSurface(DrawSurface& s, double x, double y, double w, double h)
        : s_(s), x_(x), y_(y), w_(w), h_(h) {}
    double ScaleWidth() const override { return w_; }
    double ScaleHeight() const override { return h_; }
    double PixelsPerTwip() const override { return s_.PixelsPerTwip(); }
    bool CanUndoMarks() const override { return s_.CanUndoMarks(); }
    void Cls() override {
        Sync();
        s_.FilledBox(x_, y_, x_ + w_, y_ + h_, BackColor);
        CurrentX = CurrentY = 0;
    }
    void Line(double x1, double y1, double x2, double y2, uint32_t c) override {
        Sync();
        s_.Line(x1 + x_, y1 + y_, x2 + x_, y2 + y_, c);
        CurrentX = x2;
        CurrentY = y2;
    }
    void Box(double x1, double y1, double x2, double y2, uint32_t c) override {
        Sync();
        s_.Box(x1 + x_, y1 + y_, x2 + x_, y2 + y_, c);
    }
    void FilledBox(double x1, double y1, double x2, double y2, uint32_t c) override {
        Sync();
        s_.FilledBox(x1 + x_, y1 + y_, x2 + x_, y2 + y_, c);
    }
    void Circle(double cx, double cy, double r, uint32_t c) override {
        Sync();
        s_.Circle(cx + x_, cy + y_, r, c);
    }
    void Arc(double cx, double cy, double r, uint32_t c, double a, double b) override {
        Sync();
        s_.Arc(cx + x_, cy + y_, r, c, a, b);
    }
    double TextWidth(const std::string& t) override {
        Sync();
        return s_.TextWidth(t);
    }
    double TextHeight(const std::string& t) override {
        Sync();
        return s_.TextHeight(t);
    }
    void Print(const std::string& t) override {
        Sync();
        s_.CurrentX = CurrentX + x_;
        s_.CurrentY = CurrentY + y_;
        s_.Print(t);
        CurrentX = s_.CurrentX - x_;
    }

  private:
    void Sync() {
        s_.ForeColor = ForeColor;
        s_.FillColor = FillColor;
        s_.FillStyle = FillStyle;
        s_.DrawWidth = DrawWidth;
        s_.DrawStyle = DrawStyle;
        s_.DrawMode = DrawMode;
        s_.FontName = FontName;
        s_.FontSize = FontSize;
        s_.FontBold = FontBold;
    }
    DrawSurface& s_;
    double x_, y_, w_, h_;
};

constexpr double kStripHeight = 600;

void DrawPage(DrawSurface& s, const TrackMapSettings& settings) {
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    s.Cls();
    BoxSurface mapBox(s, 0, 0, W, H - kStripHeight);
    TrackMap map(mapBox);
    map.settings = settings;
    map.ShowWholeTrack_Click();
    const MapStrips& st = map.view.strips;
    // The strips: the colour strip between its low and high values at the
    // left, the scale bar and its label at the right.
    BoxSurface below(s, 0, H - kStripHeight, W, kStripHeight);
    below.FontName = "Microsoft Sans Serif";
    below.FontSize = 8;
    if (st.coded) {
        const double lw = std::max(below.TextWidth(st.ScaleMin), 400.0);
        BoxSurface strip(s, 200 + lw + 100, H - kStripHeight + 150, 3000, 300);
        map.DrawColorScale(strip);
        below.CurrentX = 200;
        below.CurrentY = 300 - below.TextHeight(st.ScaleMin) / 2;
        below.Print(st.ScaleMin);
        below.CurrentX = 200 + lw + 100 + 3000 + 100;
        below.Print(st.ScaleMax);
        below.CurrentX += 200;
        below.Print(settings.MapColorVar);
    }
    if (st.barShown) {
        BoxSurface bar(s, W - 2200 - below.TextWidth(st.ScaleLabel), H - kStripHeight, 2000,
                       kStripHeight - 30);
        map.DrawMapScale(bar);
        below.CurrentX = W - 150 - below.TextWidth(st.ScaleLabel);
        below.CurrentY = 350 - below.TextHeight(st.ScaleLabel);
        below.Print(st.ScaleLabel);
    }
    below.DrawMode = DrawModes::CopyPen;
    below.Line(0, 0, W, 0, Rgb(128, 128, 128));
}

}  // namespace

int RunMap(const std::vector<std::string>& args) {
    ParsedArgs parsed =
        ParseArguments(args, {{"var", "runs", "size", "o", "output", "auto-sectors"}, {"laps"}});
    if (parsed.help) {
        PrintUsage(std::cout, "map");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("map", parsed.error);
    const std::string output = OutputPath(parsed);
    if (parsed.positional.empty()) return UsageError("map", "no run file given");
    if (output.empty()) return UsageError("map", "no picture to write (-o OUT.png|.svg|.pdf)");
    int width = 1600, height = 900;
    if (parsed.values.count("size") && !ParseSize(parsed.Value("size"), width, height))
        return UsageError("map", "--size takes WIDTHxHEIGHT in pixels, 100 to 20000 each");
    std::vector<std::string> runs;
    {
        std::stringstream list(parsed.values.count("runs") ? parsed.Value("runs") : "1");
        std::string item;
        while (std::getline(list, item, ','))
            if (!ValidNumber(item) || GetVal_NI(item) < 1)
                return UsageError("map", "--runs takes run numbers from 1, separated by commas");
            else
                runs.push_back(std::to_string(static_cast<int>(GetVal_NI(item))));
        if (runs.empty() || runs.size() > kMapPanels)
            return UsageError("map", "--runs takes one to ten run numbers");
    }

    // Text needs Qt's font database: an application without a screen.
    std::unique_ptr<QGuiApplication> app;
    StartGuiForFonts(app);

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    bool allLoaded = false;
    if (const int code = LoadAndProcess("map", parsed, allLoaded); code != kExitOk) return code;

    TrackMapSettings settings;
    if (parsed.values.count("var") && parsed.Value("var") != kNoColorCoding) {
        const std::string var = parsed.Value("var");
        if (!KnownVariable("map", var)) return kExitUsage;
        settings.MapColorVar = var;
    }
    if (!RunsLoaded("map", runs)) return kExitFailed;
    settings.RunsDisplayed = std::to_string(runs.size());
    settings.RunsInUse = static_cast<int32_t>(runs.size());
    settings.RunToDisplay = runs;
    settings.AniRunNameTxt.assign(runs.size(), std::string());

    if (!WritePicture("map", output, width, height, [&](DrawSurface& s) { DrawPage(s, settings); }))
        return kExitFailed;
    return allLoaded ? kExitOk : kExitFailed;
}

}  // namespace tl::cli
