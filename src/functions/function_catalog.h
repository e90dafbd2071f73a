#pragma once
// The measuring functions by function_id: their windows, captions, setup dialogs and the type
// word under which their batches are stored.
#include <cstdint>

namespace lumora {

struct function_entry {
    std::int16_t function_id;
    const char* window;        // objectName of the result window
    const char* caption;       // its title
    const char* setup;         // objectName of the setup dialog, or nullptr
    const char* setup_caption; // its title
    const char* type_word;     // the name in stored batches, or nullptr
};

// The entry of a function_id, or nullptr for 8, 9, 24 and anything else.
const function_entry* function_by_id(int function_id);
// Every entry, in menu order (Timescan fixed interval after the fixed span, Verify last).
const function_entry* function_entries(int& count);

} // namespace lumora
