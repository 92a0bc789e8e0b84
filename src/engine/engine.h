// The spectrum engine as the rest of the workbench calls it: the FFT windows, the spectrum of
// the trace on show, its fold into plot columns with the value and X to pixel mappings, and the
// signal metrics.
#pragma once

#include "engine/display_map.h"
#include "engine/metrics.h"
#include "engine/spectrum.h"
#include "engine/spectrum_hooks.h"
#include "engine/windows.h"
