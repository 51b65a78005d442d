/* The C interface of the external serial conversion library,
 * libExternalSerialConversion.so. The library exports three functions:
 *
 *   int tl_es_variable_count(void);
 *       Number of variables the library decodes, 0 to 48.
 *   const char* tl_es_variable_name(int n);
 *       Name of variable n (0 to count - 1), a NUL-terminated string owned by
 *       the library and valid until it is unloaded. The program shows it as
 *       "S:" and the name.
 *   int tl_es_convert(const unsigned char* bytes, int length,
 *                     double* values, int capacity);
 *       Decodes one block of serial bytes into values[0..count-1]. capacity
 *       is the room in values (48). Returns the number of values written, or
 *       a negative number on error.
 *
 * Plain C, no allocation crossing the boundary, so a library can be written
 * in any language that exports C symbols. */
#ifndef TRACELAB_EXTERNAL_SERIAL_API_H
#define TRACELAB_EXTERNAL_SERIAL_API_H

#ifdef __cplusplus
extern "C" {
#endif

typedef int (*tl_es_variable_count_fn)(void);
typedef const char* (*tl_es_variable_name_fn)(int n);
typedef int (*tl_es_convert_fn)(const unsigned char* bytes, int length, double* values,
                                int capacity);

#define TL_ES_MAX_VARIABLES 48

#ifdef __cplusplus
}
#endif

#endif
