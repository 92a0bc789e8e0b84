// Text and unit rules of the conditioning dialogs.
#include "conditioning/dialog_input.h"

#include "state/program_state.h"

#include <cctype>

namespace kv {

bool isNumeric(std::string_view t) {
    size_t a = 0, b = t.size();
    while (a < b && std::isspace(static_cast<unsigned char>(t[a])))
        ++a;
    while (b > a && std::isspace(static_cast<unsigned char>(t[b - 1])))
        --b;
    size_t i = a;
    const auto digit = [&](size_t k) {
        return k < b && std::isdigit(static_cast<unsigned char>(t[k]));
    };
    if (i < b && (t[i] == '+' || t[i] == '-')) ++i;
    size_t digits = 0;
    while (digit(i)) {
        ++i;
        ++digits;
    }
    if (i < b && t[i] == '.') {
        ++i;
        while (digit(i)) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0) return false;
    if (i < b && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < b && (t[i] == '+' || t[i] == '-')) ++i;
        if (!digit(i)) return false;
        while (digit(i))
            ++i;
    }
    return i == b;
}

double unitFactor(int index) {
    return index == 1 ? 1e3 : index == 2 ? 1e6 : 1.0;
}

int axisUnitIndex(const ProgramState& st) {
    const double top = st.MaxFreq;
    return top > 1e6 ? 2 : top > 1e3 ? 1 : 0;
}

} // namespace kv
