// libFuzzer harness for one reader: the input is the recording, imported as reader_input.h
// describes. The target's name (KV_FUZZ_TARGET) picks the format and the import dialog entry.
#include "reader_input.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

kv::fuzz::ReaderRun& reader() {
    static kv::fuzz::ReaderRun r = [] {
        const kv::fuzz::ReaderTarget* t = kv::fuzz::readerTarget(KV_FUZZ_TARGET);
        if (!t) std::abort(); // a target fuzz/CMakeLists.txt names but reader_input.h lacks
        return kv::fuzz::ReaderRun(*t);
    }();
    return r;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    reader();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The state is put back at the end of the execution rather than at the start of the next:
    // what the import allocated into it (messages, file information, paths) is given back by
    // the execution that made it. libFuzzer counts an execution's allocations against its
    // frees, and runs an input again in search of a leak whenever there were more of them.
    reader().import(data, size);
    reader().reset();
    return 0;
}
