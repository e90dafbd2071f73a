#pragma once
// The store at program start: Lumora.db opened and the settings loaded, with the user's word on a
// file that cannot be read as a database.
#include <QString>
#include <functional>

namespace lumora {

enum class store_start { ready, quit };

// Points the batches at the lab's server when one is configured (LUMORA_DATABASE or the [database]
// section of the settings file); a server that cannot be reached does not stop the start. Opens
// Lumora.db in the data folder and runs load_settings. A file that is not a database, or a
// damaged one, is offered to be moved aside (renamed with the date, nothing deleted) so that the
// program starts with a new database; the user may quit instead. `before_box` runs once before the
// first box (the splash goes). On quit `why` holds the reason to show, or "" when the user chose it.
store_start open_store(QString& why, const std::function<void()>& before_box = {});

} // namespace lumora
