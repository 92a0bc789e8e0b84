// Where the spectrum builder hands over to the signal conditioning that changes a trace as
// shown: the FFT filter, auto-span, whitening and gain. The builder calls each hook at its fixed
// point in every trace; this base class is the workbench with none of them, so every hook leaves
// the spectrum as the builder made it. The conditioning floor plugs its own in through
// ProgramState::spectrumHooks.
#pragma once

#include <cstdint>

namespace kv {

struct ProgramState;

class SpectrumHooks {
  public:
    virtual ~SpectrumHooks() = default;

    /// True while a frequency-domain filter shapes every transform. The builder then filters,
    /// transforms back for the time trace, transforms forward again and forms amplitudes for all
    /// N elements instead of the first N/2.
    virtual bool transformFilterOn(const ProgramState&) const { return false; }
    /// Shapes one transform in place: re[1..n], im[1..n], element k being bin k - 1.
    virtual void filterTransform(const ProgramState&, float* /*re*/, float* /*im*/,
                                 int32_t /*n*/) const {}

    /// After the peak search: moves the span round the peak while auto-span is on.
    virtual void afterPeakSearch(ProgramState&) {}
    /// After the peak search and auto-span: replaces the band of the spectrum while whitening
    /// is on (it may run the window and transforms again through the engine).
    virtual void whiten(ProgramState&) {}

    /// The factor every sample of the time trace is multiplied by after the transform; 1 while
    /// the gain is off.
    virtual float traceGain(const ProgramState&) const { return 1.0f; }
};

/// The hooks of a workbench with nothing switched on: one shared, stateless object.
SpectrumHooks& noSpectrumHooks();

} // namespace kv
