#include "report_registry.h"

namespace lumora {

const std::vector<report_piece>& report_pieces() {
    static const std::vector<report_piece> pieces{spectrum_report(),  photometry_report(), timescan_report(),
                                                  timescan2_report(), quant_report(),      protein_report(),
                                                  kinetic_report()};
    return pieces;
}

const report_piece* report_piece_for(int function_id) {
    for (const report_piece& p : report_pieces())
        if (p.function_id == function_id) return &p;
    return nullptr;
}

} // namespace lumora
