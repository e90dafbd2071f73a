#include "function_window.h"
#include "kinetic/frmKinetic.h"
#include "photometry/frmPhotometry.h"
#include "protein/frmProtein.h"
#include "quantitative/frmQuant.h"
#include "spectrum/frmSpectrum.h"
#include "timescan/frmTimescan.h"
#include "timescan_interval/frmTimescan2.h"

namespace lumora {

function_window* make_function_window(const function_entry& entry) {
    switch (entry.function_id) {
    case 1:
        return new frmPhotometry(entry);
    case 2:
        return new frmSpectrum(entry);
    case 3:
        return new frmTimescan(entry);
    case 13:
        return new frmTimescan2(entry);
    case 4:
        return new frmKinetic(entry);
    case 5:
        return new frmQuant(entry);
    case 11:
        return new frmProtein(entry);
    default:
        return new function_window(entry);
    }
}

} // namespace lumora
