#pragma once
// The Win32 subset the system calls on: the basic Windows types, window and device-context
// handles, the executable's path, tick and performance counters, MulDiv and rectangles.
//
// On Linux HWND carries an X11 Window id of the default display (null means headless),
// wide text is UTF-16 (WCHAR is char16_t, so wide literals are u"..."), and paths handed
// out in the Windows form use backslashes; ixo_native_path turns them back.

#include <ixocore/core/api.h>

#include <cstdint>
#include <string>

#if defined(_WIN32)
typedef wchar_t WCHAR;
#else
typedef char16_t WCHAR;
#endif

typedef int BOOL;
typedef unsigned char BYTE;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef int INT;
typedef unsigned int UINT;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::int64_t LONGLONG;
typedef std::uint64_t ULONGLONG;
typedef std::int32_t HRESULT;
typedef float FLOAT;
typedef char CHAR;
typedef WCHAR* LPWSTR;
typedef WCHAR const* LPCWSTR;
typedef char const* LPCSTR;
typedef void* LPVOID;
typedef void const* LPCVOID;
typedef void* HANDLE;
typedef DWORD* LPDWORD;

// Opaque handles. HWND's value is an X11 Window id; HDC comes from GetWindowDC.
typedef struct HWND__* HWND;
typedef struct HDC__* HDC;
typedef struct HINSTANCE__* HMODULE;
typedef HMODULE HINSTANCE;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

#define S_OK static_cast<HRESULT>(0)
#define S_FALSE static_cast<HRESULT>(1)
#define E_NOTIMPL static_cast<HRESULT>(0x80004001u)
#define E_NOINTERFACE static_cast<HRESULT>(0x80004002u)
#define E_POINTER static_cast<HRESULT>(0x80004003u)
#define E_FAIL static_cast<HRESULT>(0x80004005u)
#define E_OUTOFMEMORY static_cast<HRESULT>(0x8007000Eu)
#define E_INVALIDARG static_cast<HRESULT>(0x80070057u)

// GetDeviceCaps indices: logical pixels per inch along x and y.
#define LOGPIXELSX 88
#define LOGPIXELSY 90

// MAX_PATH as on Windows; GetModuleFileNameW is not limited by it.
#define MAX_PATH 260

typedef struct tagRECT
{
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT, *LPRECT;
typedef RECT const* LPCRECT;

typedef struct tagPOINT
{
    LONG x;
    LONG y;
} POINT, *LPPOINT;

typedef struct tagSIZE
{
    LONG cx;
    LONG cy;
} SIZE, *LPSIZE;

typedef union _LARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
} LARGE_INTEGER;

// Writes the path of a module as UTF-16 with backslash separators into buffer, at most size
// characters including the terminating zero: the running executable for a null module, the
// shared object (resolved, absolute) for a handle from GetModuleHandleExW. Returns the
// number of characters written without the zero; when the buffer is too small the path is
// truncated, terminated and size is returned, as on Windows. Returns 0 for a null buffer,
// a zero size, a handle that is no loaded module, or when the path cannot be read.
IXO_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);

// GetModuleHandleExW flags. Only look-up by address is supported; the reference count of a
// module is never changed, so UNCHANGED_REFCOUNT is implied.
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

// With GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, `name` is an address inside a loaded module
// (a function or variable of it) and *module receives that module's handle. FALSE, with
// *module null, without that flag, for a null name or an address in no module; FALSE for a
// null module pointer.
IXO_API BOOL GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module);

// Milliseconds since an arbitrary fixed start (the monotonic clock), wrapping at 2^32.
IXO_API DWORD GetTickCount();

// The monotonic clock in ticks of QueryPerformanceFrequency (nanoseconds). FALSE for a
// null pointer.
IXO_API BOOL QueryPerformanceCounter(LARGE_INTEGER* count);
// Ticks per second of QueryPerformanceCounter (10^9). FALSE for a null pointer.
IXO_API BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);

// number * numerator / denominator with a 64-bit intermediate, rounded to the nearest
// integer with halves away from zero. Returns -1 when denominator is 0 or the result does
// not fit in 32 bits, as on Windows.
IXO_API int MulDiv(int number, int numerator, int denominator);

// The device context of a window. A null window gives the context of the screen, which on
// a headless machine has no display. Never fails; nothing is allocated, so ReleaseDC is
// optional.
IXO_API HDC GetWindowDC(HWND window);
// Releases a context from GetWindowDC; returns 1 for a context, 0 for null.
IXO_API int ReleaseDC(HWND window, HDC dc);
// LOGPIXELSX / LOGPIXELSY: the display's resolution in dots per inch when the context
// belongs to an X11 window whose display can be opened (the screen's size in pixels over
// its size in millimetres, rounded), 96 otherwise. 0 for other indices or a null context.
IXO_API int GetDeviceCaps(HDC dc, int index);

// Stores the four coordinates into rect; FALSE for a null rect.
IXO_API BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom);

// A Windows path (UTF-16, either separator) as a native path: UTF-8 with forward slashes.
// Null gives an empty string; unpaired surrogates become U+FFFD.
IXO_API std::string ixo_native_path(LPCWSTR path);
