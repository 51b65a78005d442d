// The one drawing interface of every view: a graph's box, the track map, a
// dashboard, a printed page, a PNG, SVG or PDF file all stand behind it, so
// the same drawing code serves the window, files and the printer.
//
// Units are twips, 1440 to the inch, with x to the right and y downward from
// the surface's top left corner; an implementation maps them to its device by
// the device's resolution (96 dpi at 100 % on a screen, 192 at 200 %), so
// every length the views are defined by stays as written and lines and text
// stay crisp at any scale.
//
// The state is that of the picture boxes the views were first drawn on:
// - ForeColor: the colour of lines and text when none is given; FillColor and
//   FillStyle (solid or transparent) fill circles and pies; colours are packed
//   with the low byte red, then green, then blue (see Rgb in core/support.h).
// - DrawWidth: the pen's width in device pixels at 96 dpi (so a width of 1 is
//   one pixel at 100 % and two at 200 %); DrawStyle solid or dotted (a
//   dotted pen applies to width 1 only, as it always did).
// - DrawMode: copy pen (13) draws the colour; XOR pen (7) XORs the colour into
//   the picture and invert (6) inverts it, so that a mark drawn twice at the
//   same place is gone again, every pixel restored. Surfaces that cannot undo
//   (files, the printer) do not draw XOR and invert marks at all: printing
//   draws no cursors.
// - Font name, size in points and bold. "Microsoft Sans Serif", the views'
//   face, is mapped to the desktop's sans-serif face. FontSmoothing: text is
//   drawn antialiased; a read-out that is taken away by printing it again in
//   white is printed with it off, so that the second print covers exactly
//   the pixels of the first.
// - CurrentX, CurrentY: where Print writes and where a Line without a start
//   begins. Line leaves them at its end point, Circle at its centre, Print
//   after its text (see Print).
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

namespace tl {

enum class FillStyles { Solid = 0, Transparent = 1 };
enum class DrawStyles { Solid = 0, Dash = 1, Dot = 2 };
enum class DrawModes { Invert = 6, XorPen = 7, CopyPen = 13 };

inline constexpr uint32_t kBlack = 0x000000;
inline constexpr uint32_t kWhite = 0xFFFFFF;
inline constexpr double kTwipsPerInch = 1440.0;

class DrawSurface {
  public:
    virtual ~DrawSurface() = default;

    // --- state ---
    uint32_t ForeColor = kBlack;
    uint32_t BackColor = kWhite;
    uint32_t FillColor = kBlack;
    FillStyles FillStyle = FillStyles::Transparent;
    int DrawWidth = 1;
    DrawStyles DrawStyle = DrawStyles::Solid;
    DrawModes DrawMode = DrawModes::CopyPen;
    std::string FontName = "Microsoft Sans Serif";
    double FontSize = 8.25;
    bool FontBold = false;
    bool FontSmoothing = true;
    double CurrentX = 0;
    double CurrentY = 0;

    // --- size ---
    virtual double ScaleWidth() const = 0;
    virtual double ScaleHeight() const = 0;
    // Device pixels per twip (96 / 1440 at 100 % on a screen).
    virtual double PixelsPerTwip() const = 0;
    // False for files and the printer: XOR and invert marks are not drawn.
    virtual bool CanUndoMarks() const = 0;
    // True when the surface is made of device pixels (an image): every
    // position lands in the pixel column DeviceX gives, and lines whose ends
    // share a column are drawn straight down that column. False for vector
    // surfaces (SVG, PDF, the printer), which keep positions as they are.
    virtual bool HasPixelColumns() const { return false; }
    // The device pixel column that holds x (twips) on a surface with pixel
    // columns; on others, the device unit x falls in.
    virtual int64_t DeviceX(double twips) const {
        return static_cast<int64_t>(std::floor(twips * PixelsPerTwip()));
    }

    // --- operations ---
    // Fills the whole surface with BackColor; CurrentX and CurrentY go to 0.
    virtual void Cls() = 0;
    // A line from (x1, y1) to (x2, y2) in the colour; CurrentX/Y become
    // (x2, y2).
    virtual void Line(double x1, double y1, double x2, double y2, uint32_t colour) = 0;
    void Line(double x1, double y1, double x2, double y2) { Line(x1, y1, x2, y2, ForeColor); }
    // The form that continues from CurrentX, CurrentY.
    void LineTo(double x2, double y2, uint32_t colour) { Line(CurrentX, CurrentY, x2, y2, colour); }
    void LineTo(double x2, double y2) { LineTo(x2, y2, ForeColor); }
    // A joined line through count points in the colour, the same pixels as
    // the lines between each pair; surfaces draw it in one call.
    virtual void Polyline(const double* xs, const double* ys, int count, uint32_t colour) {
        if (count == 1) Line(xs[0], ys[0], xs[0], ys[0], colour);
        for (int i = 1; i < count; ++i) Line(xs[i - 1], ys[i - 1], xs[i], ys[i], colour);
    }
    // The box form: the rectangle's outline in the colour.
    virtual void Box(double x1, double y1, double x2, double y2, uint32_t colour) = 0;
    // The filled-box form: the rectangle filled with the line's colour
    // (not FillColor).
    virtual void FilledBox(double x1, double y1, double x2, double y2, uint32_t colour) = 0;
    // A circle of the radius about (cx, cy) in the colour, filled with
    // FillColor when FillStyle is solid. With start and end angles (radians,
    // counter-clockwise from 3 o'clock) only that arc is drawn; a negative
    // angle also draws the radius to that end of the arc, so that two
    // negative angles give a pie. CurrentX/Y become the centre.
    virtual void Circle(double cx, double cy, double radius, uint32_t colour) = 0;
    virtual void Arc(double cx, double cy, double radius, uint32_t colour, double start,
                     double end) = 0;
    // The text's width and height in the current font, in twips.
    virtual double TextWidth(const std::string& text) = 0;
    virtual double TextHeight(const std::string& text) = 0;
    // Writes text in ForeColor with the top left of its cell at CurrentX,
    // CurrentY. Afterwards CurrentX is at the text's end and CurrentY
    // unchanged; PrintLine then moves to the start of the next line
    // (CurrentX 0, CurrentY down by the text's height), as a print without a
    // trailing semicolon did.
    virtual void Print(const std::string& text) = 0;
    void PrintLine(const std::string& text) {
        const double h = TextHeight(text);
        Print(text);
        CurrentX = 0;
        CurrentY += h;
    }
};

}  // namespace tl
