// The shared parts of every reader: the trace loop, the corrupted-file handler, fitting the
// trace length to a power of two, and checked header arithmetic.
#include "import/reader.h"

#include "platform/message_title.h"
#include "platform/numeric.h"

#include <algorithm>
#include <limits>

namespace kv {

ImportContext::ImportContext(Workbench& w, const std::string& source)
    : wb(w), st(w.st), dialogFileName(source), sourcePath(source), open(w.openSource) {}

TraceOutput::TraceOutput(ImportContext& ctx, const std::string& path, bool yieldEachTrace)
    : ctx_(ctx), yield_(yieldEachTrace) {
    progress_ = ctx.wb.host.progress("Import", ctx.st.TraceCount);
    file_.open(path);
}

bool TraceOutput::next(int k) {
    if (yield_) {
        ctx_.wb.host.yield();
        if (progress_ && progress_->cancelled()) ctx_.st.ImportCancelled = true;
        if (ctx_.st.ImportCancelled) return false;
    }
    if (progress_) progress_->setValue(k);
    return true;
}

void TraceOutput::write(std::span<const float> trace) {
    file_.write(writePos_, trace.data(), trace.size());
    writePos_ += 4 * int64_t(ctx_.st.Sp_Samples);
}

void TraceOutput::finish() {
    ctx_.st.WorkingFileLength = file_.length();
    progress_.reset();
    file_.close();
}

namespace {

/// The longest trace fitTraceLength makes; a trace room up to this size is kept for the next
/// read.
constexpr size_t kKeptTraceRoom = size_t(1) << 16;

/// The room of the thread's last trace, all zeros; empty while a read holds it.
std::vector<float>& spareTrace() {
    thread_local std::vector<float> spare;
    return spare;
}

} // namespace

LentTrace::LentTrace(size_t n) : n_(n) {
    room_.swap(spareTrace());
    if (room_.size() < n) room_.resize(n);
}

LentTrace::~LentTrace() {
    std::fill_n(room_.data(), dirty_, 0.0f);
    if (room_.size() <= kKeptTraceRoom && spareTrace().empty()) spareTrace().swap(room_);
}

void reportFailedRead(ImportContext& ctx, Failure how, const char* text) {
    ctx.wb.host.message(how == Failure::Memory ? kOutOfMemoryText : text, kMessageTitle,
                        MsgIcon::Critical);
    if (ctx.cleanSet) ctx.cleanSet();
    ctx.wb.cmd.button(2).visible = true;
    ctx.st.TempPath.clear();
}

void withCorruptedFileHandler(ImportContext& ctx, const std::function<void()>& body) {
    const Failure how = catchInputFailure(body);
    if (how == Failure::None) return;
    ctx.dialogFileName.clear();
    reportFailedRead(ctx, how, "File corrupted!");
}

std::unique_ptr<ByteSource> openSourceSized(ImportContext& ctx) {
    auto src = ctx.openSource();
    if (src->size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
    ctx.st.SourceLength = static_cast<int32_t>(src->size());
    return src;
}

void copySamples(const std::vector<int16_t>& raw, std::vector<float>& trace, int64_t n) {
    if (n > 0) {
        checkIndex(size_t(n - 1), trace.size());
        checkIndex(size_t(n - 1), raw.size());
    }
    for (int64_t i = 0; i < n; ++i)
        trace[size_t(i)] = raw[size_t(i)];
}

double checkedDiv(double a, double b) {
    if (b == 0.0) throw ReadError("Division by zero");
    return a / b;
}

int32_t checkedInt32(double x) {
    double r = roundHalfEven(x);
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) throw ReadError("Overflow");
    return static_cast<int32_t>(r);
}

int16_t checkedInt16(double x) {
    double r = roundHalfEven(x);
    if (!(r >= -32768.0 && r <= 32767.0)) throw ReadError("Overflow");
    return static_cast<int16_t>(r);
}

} // namespace kv
