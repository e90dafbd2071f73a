#include "protein_setup.h"

namespace lumora {

ProteinSetup protein;

const std::array<protein_assay, 7>& protein_assays() {
    static const std::array<protein_assay, 7> assays = {{{"Bradford Protein Analysis", "595"},
                                                         {"Lowry Protein Analysis,high sensitivity", "750"},
                                                         {"Lowry Protein Analysis,low sensitivity", "500"},
                                                         {"Biuret Protein Analysis", "540"},
                                                         {"Colloidal Gold", "595"},
                                                         {"Bicinchoninate(BCA)", "562"},
                                                         {"General", "500"}}};
    return assays;
}

} // namespace lumora
