#include "core/errors.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include "core/build_profile.h"
#include "core/log.h"
#include "core/ui_services.h"

namespace tl {

bool ErrorsPropagate() {
    return Profile().InterpFlag;
}

void ReportError(const std::string& procedureName) {
    // Only the debug mode reports; the plain mode forgets the error.
    if (!Profile().DebugFlag) return;
    std::string description = "Unknown error";
    int number = 0;
    std::string source = "Tracelab";
    try {
        throw;
    } catch (const RuntimeError& e) {
        description = e.what();
        number = e.number();
        source = e.source();
    } catch (const std::bad_alloc&) {
        description = "Out of memory";
        number = kErrOutOfMemory;
    } catch (const std::filesystem::filesystem_error& e) {
        description = e.what();
        number = kErrPathFileAccess;
        source = "file system";
    } catch (const std::exception& e) {
        description = e.what();
    } catch (...) {
    }
    const char* rule = "==============ERROR REPORT====================";
    LogDebug(rule);
    LogDebug("Error in " + procedureName);
    LogDebug("Error Description: " + description);
    LogDebug("Error Number: " + std::to_string(number));
    LogDebug("Error Help Context: 0");
    LogDebug("Error Last Dll: " + std::to_string(errno));
    LogDebug("Error Source: " + source);
    LogDebug(rule);
    Message("Error, an error was encountered in " + procedureName + "- check log");
}

}  // namespace tl
