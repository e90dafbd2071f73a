#pragma once
// The opt-in trace: with LUMORA_TRACE=<file> every byte buffer written to the port, every buffer
// handed to the decoder and every status panel write is appended as one JSON object a line,
// flushed at once, t in seconds since program start:
//   {"t":1.250031,"tx":"0601f4"}  {"t":1.301200,"rx":"44005b8d0000"} {"t":1.301250,"panel":2,"text":"0.000A"}
// and each change of the port's framing counts, with all four counts as they now stand:
//   {"t":2.1,"framing":"cut","cut":3,"joined":1,"dropped":0,"dropped_bytes":0}
#include <QString>
#include <cstddef>
#include <cstdint>

namespace lumora::trace {

// Opens the file named by LUMORA_TRACE, if any. Called once at program start.
void open_from_environment();
// Opens (or with "" closes) a trace file explicitly.
void open(const QString& path);
bool enabled();
void tx(const std::uint8_t* bytes, std::size_t n);
void rx(const std::uint8_t* bytes, std::size_t n);
void panel(int panel, const QString& text);
void framing(const char* what, std::uint64_t cut, std::uint64_t joined, std::uint64_t dropped,
             std::uint64_t dropped_bytes);

} // namespace lumora::trace
