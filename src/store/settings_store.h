#pragma once
// The settings and the baseline in the system table: a name-value table whose keys are
// "Default WL", "Corporation Name", "Product Name", "Software Name", "ComPort" and BL000..BL790.

namespace lumora {

// Reads the system table into the shared state, loads the baseline and sets the start defaults.
// Database failures are not caught here (throws db_error).
void load_settings();
// Baseline rows in key order into column 0 of baseline_curves and reference_intensity.
void load_baseline();
// Column 0 of baseline_curves into BL000..BL790, in one transaction, with progress in panel 6.
// While another program locks the file the write is tried again for a few seconds from the event
// loop; a save that still fails says why in panel 6 and in one "System Message" box.
void save_baseline();
// The chosen port number into "ComPort".
void save_com_port();

} // namespace lumora
