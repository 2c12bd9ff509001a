// The Windows API headers, without the min/max macros and the rarely used
// parts. Included only by the Windows halves of the platform layer.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
