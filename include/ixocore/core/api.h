#pragma once
// Export macro for the shared library: symbols are hidden by default, and every
// class or function the host may use carries IXO_API.

#if defined(_WIN32)
#if defined(IXOCORE_BUILD)
#define IXO_API __declspec(dllexport)
#else
#define IXO_API __declspec(dllimport)
#endif
#else
#define IXO_API __attribute__((visibility("default")))
#endif
