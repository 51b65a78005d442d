// The conversion driver. A run's own vehicle options reach the converters by
// standing in the family's options file (CarCfgPath) for the length of the
// conversion: the current options wait in the family's scratch file
// (TempDatPath) and are put back afterwards.
#include "road/convert_driver.h"

#include "convert/family_converters.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/ui_services.h"
#include "derived/pipeline.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {
namespace {

// Puts the user's options back at CarCfgPath when the conversion ends,
// however it ends, so a failing stage never leaves the run's file in their
// place. The copy replaces the file in one step, so CarCfgPath is never
// missing in between.
class CarFileSwap {
  public:
    ~CarFileSwap() { Restore(); }
    void MarkSwapped() { swapped_ = true; }
    void Restore() {
        if (!swapped_) return;
        swapped_ = false;
        const SystemPaths& paths = Paths();
        if (FileReadable(paths.TempDatPath)) CopyFileReplacing(paths.TempDatPath, paths.CarCfgPath);
    }

  private:
    bool swapped_ = false;
};

// Step 3: the run's own options. Returns true when they stand at CarCfgPath.
bool SwapInCarFile(RunRecord& r) {
    const SystemPaths& paths = Paths();
    if (r.CarFile.empty()) {
        DispProg("Default Vehicle Options Used");
        r.Details += "The default vehicle options were used.";
        return false;
    }
    std::string carFile = r.CarFile;
    if (!FileExists(carFile) || !FileReadable(carFile)) {
        Message(
            "The desired car option file cannot be accessed, the default options will be used "
            "instead");
        r.Details += "The default vehicle options were used.";
        DispProg("Default Vehicle Options Used");
        r.CarFile.clear();
        return false;
    }
    DispProg("Specified Car File Used");
    r.Details += "Car file :" + r.CarFile + " was used.";
    DeleteFileIfPresent(paths.TempDatPath);
    // The user's options are kept aside first; if that fails the run's file
    // is not put in their place, so nothing of theirs can be lost.
    if (!CopyFileReplacing(paths.CarCfgPath, paths.TempDatPath)) {
        LogDebug("the vehicle options could not be kept in " + paths.TempDatPath);
        Message("The current vehicle options could not be saved to " + paths.TempDatPath +
                ", the default options will be used instead");
        return false;
    }
    if (!CopyFileReplacing(r.CarFile, paths.CarCfgPath)) {
        Message(
            "The desired car option file cannot be accessed, the default options will be "
            "used instead");
        CopyFileReplacing(paths.TempDatPath, paths.CarCfgPath);
        return false;
    }
    return true;
}

}  // namespace

void ConvertRawToRunData(int32_t run, bool derivedPipeline) {
    CarFileSwap swap;
    Procedure("ConvertRawToRunData", [&] {
        RunStore& s = Store();
        if (run < 1 || run > 11) return;
        RunRecord& r = s.RunInfo[run];
        const BuildProfile& p = Profile();

        SetAllMousePointers(11);
        ShowNonModal();
        SetProcessCaption("Processing: " + r.Name);
        DispProg("");
        DispProg("Begin Processing.....");

        // The SV63 family keeps its car choice in the run's own records.
        if (!p.HardwareSV63 && SwapInCarFile(r)) swap.MarkSwapped();

        DispProg("Reset data vectors");
        WipeRunData(run);

        DispProg("Device specific code");
        if (p.HardwareSV63)
            ConvertRawToRunData_SV63(run);
        else if (p.HardwareHX40)
            ConvertRawToRunData_HX40(run);
        else if (p.HardwareMQ7 || p.HardwareSW63) {
            ConvertRawToRunData_MQ7(run);
            // MQ7 (not SW63): the wheel speed of the vehicle options'
            // formula closes the conversion of the record stream.
            if (p.HardwareMQ7) CalculateFormulaWheelSpeed(run);
        } else
            Message("Hardware not specified!");

        if (derivedPipeline) {
            DispProg("Calc derived variables");
            ProcessDerivedVariables(run);
        }

        DispProg("Check internal data");
        CheckInternalDataStillValid();

        SetAllMousePointers(0);
        HideNonModal();
        DoEvents();

        // Step 9: only a run whose file was swapped in is restored; a run
        // whose car file was cleared above had nothing swapped.
        swap.Restore();
    });
}

}  // namespace tl
