#include "core/upcall.h"

namespace tl::upcall {
namespace {
void (*g_checkInternalDataStillValid)() = nullptr;
}  // namespace

void SetCheckInternalDataStillValid(void (*procedure)()) {
    g_checkInternalDataStillValid = procedure;
}

void CheckInternalDataStillValid() {
    if (g_checkInternalDataStillValid) g_checkInternalDataStillValid();
}

}  // namespace tl::upcall
