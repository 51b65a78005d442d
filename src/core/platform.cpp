#include "core/platform.h"

#include "core/scripted_platform.h"
#include "core/system_info.h"

namespace tl {
namespace {

struct PlatformSlot {
    ScriptedPlatform fallback;
    ProcMemoryStatus realMemory;
    Platform current;
    PlatformSlot() {
        current = fallback.AsPlatform();
        current.memory = &realMemory;
    }
};

PlatformSlot& Slot() {
    static PlatformSlot slot;
    return slot;
}

}  // namespace

Platform& CurrentPlatform() {
    return Slot().current;
}

void SetPlatform(const Platform& platform) {
    PlatformSlot& slot = Slot();
    Platform fallback = slot.fallback.AsPlatform();
    fallback.memory = &slot.realMemory;
    slot.current.messages = platform.messages ? platform.messages : fallback.messages;
    slot.current.wait = platform.wait ? platform.wait : fallback.wait;
    slot.current.progress = platform.progress ? platform.progress : fallback.progress;
    slot.current.files = platform.files ? platform.files : fallback.files;
    slot.current.clock = platform.clock ? platform.clock : fallback.clock;
    slot.current.memory = platform.memory ? platform.memory : fallback.memory;
    slot.current.shell = platform.shell ? platform.shell : fallback.shell;
    slot.current.clipboard = platform.clipboard ? platform.clipboard : fallback.clipboard;
}

}  // namespace tl
