#include "function_window.h"
#include "quantitative/frmQuant.h"
#include "spectrum/frmSpectrum.h"

namespace lumora {

function_window* make_function_window(const function_entry& entry) {
    switch (entry.function_id) {
    case 2:
        return new frmSpectrum(entry);
    case 5:
        return new frmQuant(entry);
    default:
        return new function_window(entry);
    }
}

} // namespace lumora
