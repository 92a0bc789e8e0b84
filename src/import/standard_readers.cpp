// What the standards-conformant seismic readers share: their failure handler.
#include "import/standard_readers.h"

#include "platform/message_title.h"

#include <cstdio>
#include <limits>
#include <optional>

namespace kv {

void runStandardRead(ImportContext& ctx, const std::function<void()>& body) {
    std::optional<ReadRefused> refused;
    const Failure how = catchInputFailure([&] {
        try {
            body();
        } catch (const ReadRefused& e) {
            refused = e;
        }
    });
    if (how == Failure::None && !refused) return;
    ctx.dialogFileName.clear();
    ctx.st.SourceInfoLines.clear(); // no header lines of a file that did not open
    if (!refused) return reportFailedRead(ctx, how, "File corrupted!");
    ctx.wb.host.message(refused->what(), kMessageTitle, refused->icon);
    if (ctx.cleanSet) ctx.cleanSet();
    ctx.wb.cmd.button(2).visible = true;
    ctx.st.TempPath.clear();
}

std::string numberText(double x) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.10g", x);
    return buf;
}

void setSourceLength(ProgramState& st, uint64_t size) {
    st.SourceLength = int64_t(std::min<uint64_t>(size, uint64_t(INT64_MAX)));
}

} // namespace kv
