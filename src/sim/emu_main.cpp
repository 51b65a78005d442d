// tracelab-logger-emu: an HX40 logger or an SV63 meter on a pseudo-terminal,
// for trying the program's link without the hardware.
#include "sim/logger_emu.h"

int main(int argc, char** argv) {
    return tl::sim::LoggerEmuMain(argc, argv);
}
