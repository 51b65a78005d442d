// The pictures of the track map's tool buttons and playback buttons, drawn
// at any resolution in the style of the graph's toolbar.
#pragma once

#include <QIcon>
#include <QString>

namespace tl::views {

// ZoomIn, ZoomOut, ZoomWindow, ShowWholeTrack, RotateCW, RotateCCW,
// AddNewNode, DeleteNode; RewindToMarker, RewindButton, StopButton,
// SlowPlayButton, PlayButton, FForwardButton, ForwardToMarker, JumpButton.
QIcon MapIcon(const QString& control);

}  // namespace tl::views
