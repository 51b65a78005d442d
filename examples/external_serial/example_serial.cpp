/* Example external serial conversion: the block's byte count and the mean of
 * its bytes. Shows the whole interface of external_serial_api.h. */
#include "external_serial_api.h"

extern "C" {

static const char* const kNames[] = {"Block Length [-]", "Mean Byte [-]"};

int tl_es_variable_count(void) {
    return 2;
}

const char* tl_es_variable_name(int n) {
    return n >= 0 && n < 2 ? kNames[n] : "";
}

int tl_es_convert(const unsigned char* bytes, int length, double* values, int capacity) {
    if (capacity < 2 || length < 0 || (length > 0 && !bytes)) return -1;
    double sum = 0;
    for (int i = 0; i < length; ++i) sum += bytes[i];
    values[0] = length;
    values[1] = length > 0 ? sum / length : 0.0;
    return 2;
}

}  // extern "C"
