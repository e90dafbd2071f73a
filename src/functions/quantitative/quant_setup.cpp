#include "quant_setup.h"

namespace lumora {

QuantSetup quant;

const std::array<const char*, 15>& quant_units() {
    static const std::array<const char*, 15> units = {"None",  "G/dL",  "U/L",    "G/L",    "ug/dL",
                                                      "ABS",   "mg/dL", "OD",     "mABS",   "U/mL",
                                                      "ug/mL", "mEq/L", "mmol/L", "umol/L", "ng/mL"};
    return units;
}

} // namespace lumora
