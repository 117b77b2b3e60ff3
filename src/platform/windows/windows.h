#pragma once

// The system's own header, without what this program has other uses for the names of.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
