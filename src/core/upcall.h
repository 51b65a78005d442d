// Calls up to the engine's top room.
//
// The top room (road/) drives the whole road of a run: conversion, the
// derived pipeline, markers and time slip, the views. A few procedures of
// lower rooms end, as the system defines them, by bringing everything in line
// with the data: a marker placed or deleted by hand, the automatic lap marker
// at the end of processing. They cannot include the room above them, so they
// call up through this one hook. The top room connects it whenever the run
// store is cleared, and every start of the engine begins with that clear.
#pragma once

namespace tl::upcall {

// Connects CheckInternalDataStillValid (road/run_road.h).
void SetCheckInternalDataStillValid(void (*procedure)());
// Runs it; does nothing before the engine's first clear.
void CheckInternalDataStillValid();

}  // namespace tl::upcall
