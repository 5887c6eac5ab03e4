#pragma once
// Test hook of the Win32 stand-in: a performance counter that stands still until the test
// moves it, so timed animations can be stepped exactly.

#include <ixocore/platform/win32.h>

// While `frozen` is TRUE, QueryPerformanceCounter answers `ticks` (in ticks of
// QueryPerformanceFrequency) instead of the clock; FALSE returns to the clock.
IXO_API void ixo_win32_test_set_performance_counter(BOOL frozen, LONGLONG ticks);
