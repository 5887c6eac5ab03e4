#pragma once
// The library's wide character. Text is UTF-16 on every platform: wchar_t where it is
// 16 bits wide (Windows), char16_t elsewhere. IXO_TEXT("abc") makes a literal of it.

#if defined(_WIN32)
using ixo_wchar = wchar_t;
#define IXO_TEXT_(s) L##s
#else
using ixo_wchar = char16_t;
#define IXO_TEXT_(s) u##s
#endif
#define IXO_TEXT(s) IXO_TEXT_(s)
