// Sorting the failures a file can cause from faults in the program.
#include "platform/read_error.h"

#include <filesystem>
#include <ios>
#include <new>

namespace kv {

namespace {

Failure failed(Failure how, const std::exception& e, std::string* what) {
    if (what) *what = e.what();
    return how;
}

} // namespace

Failure catchInputFailure(const std::function<void()>& body, std::string* what) {
    try {
        body();
        return Failure::None;
    } catch (const ReadError& e) {
        return failed(Failure::Read, e, what);
    } catch (const std::filesystem::filesystem_error& e) {
        return failed(Failure::Read, e, what);
    } catch (const std::ios_base::failure& e) {
        return failed(Failure::Read, e, what);
    } catch (const std::bad_alloc& e) {
        return failed(Failure::Memory, e, what);
    }
}

size_t checkedCount(int64_t count) {
    if (count < 0) throw ReadError("Subscript out of range");
    if (count > kLargestArray) throw ReadError("Out of memory");
    return size_t(count);
}

} // namespace kv
