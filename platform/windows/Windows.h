// SPDX-License-Identifier: ISC
#pragma once

// The system's headers, the least of them.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
