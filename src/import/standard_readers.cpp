// What the standards-conformant seismic readers share: their failure handler.
#include "import/standard_readers.h"

#include "platform/message_title.h"

#include <limits>
#include <new>

namespace kv {

void runStandardRead(ImportContext& ctx, const std::function<void()>& body) {
    std::string text = "File corrupted!";
    MsgIcon icon = MsgIcon::Critical;
    try {
        body();
        return;
    } catch (const ReadRefused& e) {
        text = e.what();
        icon = e.icon;
    } catch (const ReadError&) {
    } catch (const std::bad_alloc&) {
    }
    ctx.dialogFileName.clear();
    ctx.st.SourceInfoLines.clear(); // no header lines of a file that did not open
    ctx.wb.host.message(text, kMessageTitle, icon);
    if (ctx.cleanSet) ctx.cleanSet();
    ctx.wb.cmd.button(2).visible = true;
    ctx.st.TempPath.clear();
}

void setSourceLength(ProgramState& st, uint64_t size) {
    st.SourceLength =
        int32_t(std::min<uint64_t>(size, uint64_t(std::numeric_limits<int32_t>::max())));
}

} // namespace kv
