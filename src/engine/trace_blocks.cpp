// The block of a TraceBlockScope: one per thread, so that two threads walking their own halves
// of a survey never share one.
#include "engine/trace_blocks.h"

#include "platform/read_error.h"
#include "platform/trace_store.h"

#include <algorithm>
#include <cstring>

namespace kv {

namespace {

struct Block {
    bool open = false;
    size_t capacity = 0; // bytes
    std::string path;
    int64_t start = 0;    // 1-based byte position of bytes[0]
    uint64_t changes = 0; // the working files' change count when the block was read
    std::vector<char> bytes;
};

thread_local Block tBlock;

/// Reads the block that holds [pos1, pos1 + len): from pos1 on when walking forwards, ending at
/// pos1 + len when walking backwards (a position before the block held).
void fill(const std::string& path, int64_t pos1, size_t len) {
    Block& b = tBlock;
    const size_t cap = std::max(b.capacity, len) / 4 * 4;
    const bool backwards = b.path == path && !b.bytes.empty() && pos1 < b.start;
    int64_t start = pos1;
    if (backwards) start = std::max<int64_t>(1, pos1 + int64_t(len) - int64_t(cap));
    b.bytes.resize(cap);
    b.path.clear(); // a read that fails leaves no block behind
    readTrace(path, start, reinterpret_cast<float*>(b.bytes.data()), cap / 4);
    b.path = path;
    b.start = start;
    b.changes = workingFileChanges();
}

} // namespace

TraceBlockScope::TraceBlockScope(size_t blockBytes) : outermost_(!tBlock.open) {
    if (!outermost_) return;
    tBlock.open = true;
    tBlock.capacity = std::max<size_t>(blockBytes, 4096);
    tBlock.path.clear();
}

TraceBlockScope::~TraceBlockScope() {
    if (!outermost_) return;
    tBlock = Block();
}

void readWorkingTrace(const std::string& path, int64_t pos1, float* out, size_t n) {
    const size_t len = n * sizeof(float);
    Block& b = tBlock;
    // Long traces gain nothing from a block: the copy is the cost, not the call.
    if (!b.open || path.empty() || pos1 < 1 || len > b.capacity / 4) {
        readTrace(path, pos1, out, n);
        return;
    }
    // A block read before any working file changed is read again: a scope may live across the
    // yields of a playback loop, in which the user may filter, re-span or open another file.
    const bool held = b.path == path && b.changes == workingFileChanges() && pos1 >= b.start &&
                      pos1 + int64_t(len) <= b.start + int64_t(b.bytes.size());
    if (!held) fill(path, pos1, len);
    std::memcpy(out, b.bytes.data() + (pos1 - b.start), len);
}

void readWorkingTraceWithHead(const std::string& path, int64_t pos1, float* head, float* out,
                              size_t n) {
    // A long trace is read with its head in one call: through the block, the head would fill a
    // block of its own, and the trace would not go through it anyway.
    const Block& b = tBlock;
    if (!b.open || n * sizeof(float) > b.capacity / 4) {
        readTraceWithHead(path, pos1, head, out, n);
        return;
    }
    readWorkingTrace(path, pos1, head, 1);
    readWorkingTrace(path, pos1 + int64_t(sizeof(float)), out, n);
}

} // namespace kv
