// An external serial conversion library for the tests, told by environment
// variables what to report: TL_ES_COUNT variables, named V1, V2, ... unless
// TL_ES_NAMES gives the names separated by '|' (an empty part is an empty
// name). The conversion gives TL_ES_COUNT values.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "external_serial_api.h"

extern "C" {

static char names[64][64];

static int Count(void) {
    const char* c = getenv("TL_ES_COUNT");
    return c ? atoi(c) : 0;
}

int tl_es_variable_count(void) {
    return Count();
}

const char* tl_es_variable_name(int n) {
    const char* given = getenv("TL_ES_NAMES");
    if (n < 0 || n >= 64) return "";
    if (!given) {
        snprintf(names[n], sizeof names[n], "V%d", n + 1);
        return names[n];
    }
    const char* p = given;
    for (int k = 0; k < n && p; ++k) {
        p = strchr(p, '|');
        if (p) ++p;
    }
    if (!p) return "";
    size_t len = strcspn(p, "|");
    if (len >= sizeof names[n]) len = sizeof names[n] - 1;
    memcpy(names[n], p, len);
    names[n][len] = 0;
    return names[n];
}

int tl_es_convert(const unsigned char* bytes, int length, double* values, int capacity) {
    (void)bytes;
    (void)length;
    const int count = Count();
    if (count > capacity) return -1;
    for (int i = 0; i < count; ++i) values[i] = i;
    return count;
}

}  // extern "C"
