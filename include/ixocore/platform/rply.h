#pragma once
// A PLY file reader with the RPly interface: open a file, read its header, register one
// callback per (element, property) pair, then read, receiving every value in file order.
//
// Reads ascii, binary_little_endian and binary_big_endian files with every PLY scalar type
// (int8/char, uint8/uchar, int16/short, uint16/ushort, int32/int, uint32/uint,
// float32/float, float64/double) and lists with any integer count type. Elements and
// properties without a callback are skipped. Comments and obj_info lines are kept and can
// be listed after the header. Nothing is written: the writer half of RPly is not offered.
//
// Safety: a header whose element counts promise more data than the file holds (for a
// regular file) fails in ply_read_header, so callers may size their arrays from the counts
// that ply_set_read_cb returns. Header lines longer than 4,096 bytes fail. Every failure
// is reported once through the error callback and by the failing call's result.

#include <ixocore/core/api.h>

#include <cstdio>

typedef struct t_ply_* p_ply;
typedef struct t_ply_element_* p_ply_element;
typedef struct t_ply_property_* p_ply_property;
typedef struct t_ply_argument_* p_ply_argument;

// Scalar types as the header names them; PLY_LIST marks a list property.
typedef enum e_ply_type
{
    PLY_INT8,
    PLY_UINT8,
    PLY_INT16,
    PLY_UINT16,
    PLY_INT32,
    PLY_UIN32,
    PLY_FLOAT32,
    PLY_FLOAT64,
    PLY_CHAR,
    PLY_UCHAR,
    PLY_SHORT,
    PLY_USHORT,
    PLY_INT,
    PLY_UINT,
    PLY_FLOAT,
    PLY_DOUBLE,
    PLY_LIST
} e_ply_type;

typedef enum e_ply_storage_mode
{
    PLY_BIG_ENDIAN,
    PLY_LITTLE_ENDIAN,
    PLY_ASCII,
    PLY_DEFAULT
} e_ply_storage_mode;

// Receives every error message; null selects a callback that prints to stderr.
typedef void (*p_ply_error_cb)(p_ply ply, const char* message);
// Called once per value; returning 0 stops ply_read, which then fails.
typedef int (*p_ply_read_cb)(p_ply_argument argument);

// Opens `name` for reading. Null (after reporting through `error_cb`) when the file cannot
// be opened. `idata` and `pdata` are kept for ply_get_ply_user_data.
IXO_API p_ply ply_open(const char* name, p_ply_error_cb error_cb, long idata, void* pdata);
// Reads from an open stream positioned at the start of the PLY data; ply_close does not
// close `fp`.
IXO_API p_ply ply_open_from_file(FILE* fp, p_ply_error_cb error_cb, long idata, void* pdata);
// Parses the header. 1 on success, 0 on a malformed header or counts the file cannot hold.
IXO_API int ply_read_header(p_ply ply);
// Registers `read_cb` (null unregisters) for one property of one element. Returns the
// element's instance count, or 0 when the element or property does not exist.
IXO_API long ply_set_read_cb(p_ply ply, const char* element_name, const char* property_name,
                             p_ply_read_cb read_cb, void* pdata, long idata);
// Reads every element, calling the registered callbacks. 1 on success, 0 on malformed or
// truncated data or when a callback returned 0.
IXO_API int ply_read(p_ply ply);
// Releases the handle (and closes the file ply_open opened). 1 on success; null is ignored
// and answers 0.
IXO_API int ply_close(p_ply ply);

// Header enumeration: the element after `last` (null for the first), or null at the end.
IXO_API p_ply_element ply_get_next_element(p_ply ply, p_ply_element last);
// Name and instance count of an element; either output may be null. 1 on success.
IXO_API int ply_get_element_info(p_ply_element element, const char** name, long* ninstances);
// The property after `last` (null for the first) of an element, or null at the end.
IXO_API p_ply_property ply_get_next_property(p_ply_element element, p_ply_property last);
// Name, type, and for lists the count and value types; any output may be null.
IXO_API int ply_get_property_info(p_ply_property property, const char** name, e_ply_type* type,
                                  e_ply_type* length_type, e_ply_type* value_type);
// Comment and obj_info lines in header order: the one after `last` (null for the first).
IXO_API const char* ply_get_next_comment(p_ply ply, const char* last);
IXO_API const char* ply_get_next_obj_info(p_ply ply, const char* last);
// The storage mode named by the header (PLY_DEFAULT before the header is read).
IXO_API e_ply_storage_mode ply_get_storage_mode(p_ply ply);
// The user data given to ply_open; either output may be null.
IXO_API int ply_get_ply_user_data(p_ply ply, void** pdata, long* idata);

// Inside a read callback: the element and the instance being read.
IXO_API int ply_get_argument_element(p_ply_argument argument, p_ply_element* element,
                                     long* instance_index);
// The property, the list length (1 for a scalar) and the value's position in the list:
// -1 for the list's count, then 0 .. length-1 (0 for a scalar).
IXO_API int ply_get_argument_property(p_ply_argument argument, p_ply_property* property,
                                      long* length, long* value_index);
// The data given to ply_set_read_cb.
IXO_API int ply_get_argument_user_data(p_ply_argument argument, void** pdata, long* idata);
// The value, converted to double.
IXO_API double ply_get_argument_value(p_ply_argument argument);
