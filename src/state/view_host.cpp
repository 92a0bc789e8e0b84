// The names and open flags of the views.
#include "state/view_host.h"

#include "state/program_state.h"

namespace kv {

const char* viewName(ViewId v) {
    switch (v) {
    case ViewId::Oscope:
        return "O-scope";
    case ViewId::Spectrum:
        return "Spectrum";
    case ViewId::Phase:
        return "Phase";
    case ViewId::Waterfall:
        return "Waterfall";
    case ViewId::Radargram:
        return "Radargram";
    }
    return "?";
}

bool& viewFlag(ProgramState& st, ViewId v) {
    switch (v) {
    case ViewId::Oscope:
        return st.OscOpen;
    case ViewId::Spectrum:
        return st.SpectrumOpen;
    case ViewId::Phase:
        return st.PhaseOpen;
    case ViewId::Waterfall:
        return st.WaterfallOpen;
    case ViewId::Radargram:
        break;
    }
    return st.RadargramOpen;
}

} // namespace kv
