#include "files/car_files.h"

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/platform.h"
#include "core/ui_services.h"

namespace tl {

namespace {

std::string CarPath() {
    return GetConfigString(Paths().TracelabCfgPath, "CarPath");
}

// The open dialog that comes again while the chosen name does not exist.
std::string OpenExisting(const std::string& title, const std::string& missingMessage) {
    FileDialogRequest request;
    request.title = title;
    request.filter = "Car Data File (*.car)|*.car";
    request.initialDir = CarPath();
    for (;;) {
        const std::vector<std::string> chosen = CurrentPlatform().files->OpenFiles(request);
        if (chosen.empty() || chosen.front().empty()) return {};
        if (FileExists(chosen.front())) return chosen.front();
        Message(missingMessage);
    }
}

}  // namespace

void SaveCarFile() {
    Procedure("SaveCarFile", [&] {
        FileDialogRequest request;
        request.title = "Save Car Details To Disk";
        request.filter = "Run Data Files (*.car)|*.car";
        request.initialDir = CarPath();
        for (;;) {
            const std::optional<std::string> chosen = CurrentPlatform().files->SaveFile(request);
            if (!chosen || chosen->empty()) return;
            std::string path = *chosen;
            if (FileExists(path) &&
                !YesNoBox("Warning", "The specified file will be over written, are you sure?"))
                continue;
            if (!FileWriteable(path)) {
                Message("File has been locked by another program or is otherwise inaccessible");
                continue;
            }
            // The copy goes through a temporary file, so a failed copy leaves
            // the old .car file as it was.
            CopyFileReplacing(Paths().CarCfgPath, path);
            return;
        }
    });
}

bool LoadCarFile() {
    return ProcedureValue("LoadCarFile", false, [&] {
        const std::string path = OpenExisting("Load Car Options From Disk", "File cannot be found");
        if (path.empty()) return false;
        return CopyFileReplacing(path, Paths().CarCfgPath);
    });
}

std::string ChooseRunCarFile() {
    return OpenExisting("Select Car Options File From Disk", "The specified file cannot be found");
}

}  // namespace tl
