// The road of a run, at the top of the engine: the procedures that reach every
// room below (the store, the conversion, the derived pipeline, markers and
// time slip, files, and the views through the platform's shell).
//
// The engine's rooms, from the ground up; a room includes only rooms below
// it (scripts/check_layers.sh fails the build's tests on one that points up):
//   core      profile, configuration, log, support routines, platform
//             interfaces, the external serial library
//   formats   frame rules of the plane families, the record stream's scan
//   store     run store and variable catalogue
//   convert   the family converters and their primitives
//   results   track markers, laps, sectors, measurements
//   derived   the derived pipeline and its stages, time slip
//   files     run files, car files, CSV export
//   link      the serial link and the logger's commands
//   views     view logic (scaling, cursors, what to draw)
//   road      this room: start-up, conversion driver, reprocess, load with
//             processing, the option models that end in a reprocess
// Results sit below derived because the derived stages use the marker
// machinery: the pipeline ends by placing the automatic lap marker, beacon
// matching writes markers, and time slip reads laps; markers and laps need
// only the store's rows. Where a result ends by bringing everything in line
// (CheckInternalDataStillValid), it calls up through core/upcall.h.
#pragma once

#include <cstdint>
#include <string>

namespace tl {

// With True forgets all; with False forgets all processed data but keeps raw
// data and run names. Also connects the lower rooms' up-calls.
void ClearCurrentRun(bool all);
// Markers, time slip, then every open view brought in line with the data.
void CheckInternalDataStillValid();
void ReprocessAllRuns();

// LoadDataFromFile of files/raw_run_files.h with ConvertRawToRunData as the
// processing of a raw run the user chose to process.
void LoadDataFromFile(const std::string& path);

}  // namespace tl
