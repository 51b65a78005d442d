// The program's own small icon set: SVG drawings in the shell's resources
// (src/shell/icons), rendered for the screen's pixel ratio, each with a
// disabled look (greyed and faded) that a toolbar shows for an entry that
// cannot be used.
#pragma once

#include <QIcon>
#include <QString>

namespace tl::shell {

// An icon of the set by name: open, save, runmanager, graph, barchart,
// trackmap, table, print, help. A null icon for an unknown name.
QIcon ToolIcon(const QString& name);
// The program's own icon, on every window.
QIcon AppIcon();

}  // namespace tl::shell
