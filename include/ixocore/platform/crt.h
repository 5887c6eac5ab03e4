#pragma once
// The C runtime's wide-character functions that the string class relies on, over
// ixo_wchar (UTF-16), with the Microsoft C runtime's behaviour: range errors, return codes,
// errno values and the wide printf rules (%s/%c take wide text in a wide format, %S/%C
// narrow text). Where the real runtime calls its invalid-parameter handler, these set
// errno and return the documented failure value.
//
// Locale: case mapping, comparison and the multibyte conversions follow the current C
// locale (LC_CTYPE); number parsing uses the current decimal point. In a single-byte
// locale ("C") bytes 0x80-0xFF map to U+0080-U+00FF and back, as in the Microsoft "C"
// locale.

#include <ixocore/core/api.h>
#include <ixocore/core/wchar.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>

#if !defined(_WIN32)
typedef int errno_t;
#endif
#ifndef _TRUNCATE
#define _TRUNCATE (static_cast<std::size_t>(-1))
#endif
#ifndef STRUNCATE
#define STRUNCATE 80
#endif

// Leading decimal integer after optional white space and sign; stops at the first other
// character and gives 0 when there is no digit. Out of int range: INT_MAX or INT_MIN with
// errno = ERANGE. A null pointer gives 0 with errno = EINVAL. errno is otherwise untouched.
IXO_API int _wtoi(ixo_wchar const* text);

// Leading floating-point number (decimal, hexadecimal, inf, nan) after optional white
// space. Overflow: +-HUGE_VAL, underflow: the tiny or zero result, both with
// errno = ERANGE. No number gives 0.0; a null pointer 0.0 with errno = EINVAL.
IXO_API double _wtof(ixo_wchar const* text);

// Case-insensitive comparison: both sides lower-cased per code unit (ASCII always, other
// characters under the current locale), then compared as unsigned numbers. Returns the
// difference of the first differing pair; a null argument gives INT_MAX with errno EINVAL.
IXO_API int _wcsicmp(ixo_wchar const* a, ixo_wchar const* b);

// Number of code units the wide formatting of `args` produces, terminator excluded, or -1
// (errno EINVAL) when the format is null or invalid. Narrow text (%S, %hs, %C) is
// converted under the current locale, its precision counting bytes; narrow text that does
// not convert produces an empty field.
IXO_API int _vscwprintf(ixo_wchar const* format, va_list args);
IXO_API int _scwprintf(ixo_wchar const* format, ...);

// Formats into `buffer` of `size` code units. Returns the code units written, terminator
// excluded. Fails with -1 when the buffer or format is null or size is 0 (errno EINVAL),
// when the format is invalid (EINVAL, buffer emptied) or when the result does not fit
// (ERANGE, buffer emptied).
IXO_API int vswprintf_s(ixo_wchar* buffer, std::size_t size, ixo_wchar const* format, va_list args);
IXO_API int swprintf_s(ixo_wchar* buffer, std::size_t size, ixo_wchar const* format, ...);

// Converts multibyte text (current locale) to UTF-16. With out = null and size = 0 it
// reports the needed size, terminator included, in *converted. Otherwise converts at most
// `count` code units (or as many as fit with count = _TRUNCATE, never splitting a surrogate
// pair) and terminates; *converted receives the code units written, terminator included.
// Returns 0, EINVAL (bad arguments), ERANGE (does not fit; out emptied), STRUNCATE
// (truncated under _TRUNCATE) or EILSEQ (invalid sequence; out emptied, *converted = 0).
IXO_API errno_t mbstowcs_s(std::size_t* converted, ixo_wchar* out, std::size_t size,
                           char const* text, std::size_t count);

// Converts UTF-16 text to multibyte text (current locale), with the same conventions as
// mbstowcs_s in bytes: `count` limits the bytes stored, never splitting a character.
// Unpaired surrogates and characters the locale cannot encode give EILSEQ.
IXO_API errno_t wcstombs_s(std::size_t* converted, char* out, std::size_t size,
                           ixo_wchar const* text, std::size_t count);

// Maps the text in place to upper (lower) case under the current locale. EINVAL, and the
// buffer emptied, when the text has no terminator within `size` code units; EINVAL for a
// null pointer.
IXO_API errno_t _wcsupr_s(ixo_wchar* text, std::size_t size);
IXO_API errno_t _wcslwr_s(ixo_wchar* text, std::size_t size);

// Reverses the code units of the text in place and returns it (null stays null).
IXO_API ixo_wchar* _wcsrev(ixo_wchar* text);
