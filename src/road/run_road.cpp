#include "road/run_road.h"

#include "convert/conversion_state.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "core/upcall.h"
#include "derived/reference_lap.h"
#include "derived/time_slip.h"
#include "files/raw_run_files.h"
#include "files/summary_run_list.h"
#include "results/track_markers.h"
#include "road/convert_driver.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/dashboard.h"
#include "views/view_forms.h"

namespace tl {

void ClearCurrentRun(bool all) {
    upcall::SetCheckInternalDataStillValid(&CheckInternalDataStillValid);
    Procedure("ClearCurrentRun", [&] {
        RunStore& s = Store();
        LogDebug("Clearing all run data");
        SetAvailableVars();
        if (all) {
            // The view lists, the per-run dashboards and the singleton views
            // belong to the shell: it unloads them all, letting events run.
            CurrentPlatform().shell->UnloadAllViews();
            DoEvents();
            // Each window frees its entry as it closes; what stays behind
            // (a window that could not close, or no windows at all) is
            // dropped here: each list is back to one free entry.
            XYGraphForms().Reset();
            BarChartForms().Reset();
            DashForms().Reset();
            Conversion().ResetStartValues();
            SummaryRuns().Clear();
            LogDebug("resetting TrackMarkerData");
            Markers().Reset();
            Measurements().Reset();
            s.RawData.Reset(Profile().PlaneFamily());
            // Texts and numbers all cleared; the pipeline puts the ambient
            // defaults back in place of zero.
            for (RunRecord& r : s.RunInfo) {
                r = RunRecord{};
                r.AmbientPressure = 0;
                r.AmbientTemperature = 0;
                r.AmbientHumidity = 0;
            }
            s.RunCount = 0;
        }
        for (RunRecord& r : s.RunInfo) {
            r.RunStart = 0;
            r.RunEnd = 0;
            r.RunLength = 0;
        }
        // The GPS origin is the plane every run's positions, and so every
        // track marker's ends, are measured on. Forgetting everything starts
        // a new plane. Forgetting only the processed data (a reprocess) keeps
        // it: otherwise the first run converted again would lay its own first
        // fix down as the origin, and after a trim, or with another run
        // current, the whole map would move under the markers, which would
        // then cross nothing and be deleted. Each run is offset onto the kept
        // origin as when it was first converted.
        if (all) Conversion().ClearGpsReference();
        s.CurrentRun = 1;
        s.LapCount = 0;
        s.RefLapNumber = 0;
        RefLap().Reset();
        RefLap().NumOfBeacons = GetConfigInt(Paths().TracelabCfgPath, "NumOfBeacons");
        s.RunData.Reset(1, 202);
    });
}

void CheckInternalDataStillValid() {
    Procedure("CheckInternalDataStillValid", [&] {
        ShowPleaseWait("Check Internal Data");
        CheckAllTrackMarkers();
        RecalcTimeSlip();
        // Every open view refreshes itself, in the documented order: the XY
        // graphs, the track map, the bar charts, the measurements table, the
        // mini map, the value table, the performance, summary and lap tables.
        CurrentPlatform().shell->RefreshOpenViews();
        HidePleaseWait();
    });
}

void ReprocessAllRuns() {
    Procedure("ReprocessAllRuns", [&] {
        RunStore& s = Store();
        // The clear makes run 1 current; the run the user had active is noted
        // first so that it is still converted first (three runs with run 2
        // active convert as 2, 1, 3) and stays the current run.
        const int32_t active = s.CurrentRun;
        ClearCurrentRun(false);
        const int32_t count = s.RunCount;
        for (int32_t n = 1; n <= count; ++n) {
            s.RunCount = n;
            AllocateRunArray(n);
        }
        s.RunCount = count;
        if (active >= 1 && active <= count) s.CurrentRun = active;
        if (count >= 1) ConvertRawToRunData(s.CurrentRun);
        for (int32_t n = 1; n <= count; ++n)
            if (n != s.CurrentRun) ConvertRawToRunData(n);
        CheckInternalDataStillValid();
    });
}

void LoadDataFromFile(const std::string& path) {
    LoadDataFromFile(path, [](int32_t run) { ConvertRawToRunData(run); });
}

}  // namespace tl
