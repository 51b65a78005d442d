// The diagnostic log, Tracelab.log in the configuration root.
//
// LogDebug writes only with DebugFlag on and InterpFlag off; it opens the file
// for appending, writes one line ended by CR LF and closes it again on every
// call, so that a crash loses nothing. No time stamp or level is added.
#pragma once

#include <string>

#include "core/build_profile.h"

namespace tl {

void LogDebug(const std::string& text);

// LogDebug writes only with DebugFlag on and InterpFlag off; loops ask first
// so that they build no log text when it does not.
inline bool LogOn() {
    const BuildProfile& p = Profile();
    return p.DebugFlag && !p.InterpFlag;
}

}  // namespace tl
