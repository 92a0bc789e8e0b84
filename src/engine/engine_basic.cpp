// The trace read that every spectrum starts from. The transform itself is added by the
// spectrum builder; until then the engine reads the trace on show into TraceBuf so that the
// open command's first read fails exactly when there is no working file.
#include "engine/engine.h"

#include "core/program_state.h"
#include "import/trace_store.h"

namespace kv {

void InitFftState(ProgramState&) {}

void FyllSpData(ProgramState& st) {
    st.TraceBuf.assign(size_t(st.Fft_Samples) + 1, 0.0f);
    readTrace(st.ActiveTracePath, st.CurrentTracePos, st.TraceBuf.data() + 1,
              size_t(st.Fft_Samples));
}

void resetPeakHold(ProgramState&) {}

} // namespace kv
