#pragma once
// The timed functions (Timescan of both forms, Kinetic) sample on the instrument's frame clock:
// no PC timer runs in a run. Every intensity frame raises the function's frame counter by one,
// the elapsed time is counter x frame_seconds, and a frame is handed on as a sample when the next
// sample is due by then. One sample per frame at most; a late sample is not made up.
#include <cstdint>
#include <functional>

namespace lumora {

// The schedule of a run, asked for on each frame (the setup may change between runs).
struct timed_plan {
    double start = 0;     // [s] sampling begins: the delay, or Kinetic's start time
    double step = 0;      // [s] from one sample to the next
    double end = -1;      // [s] the run ends once t reaches it (fixed interval); negative: never
    double lag_from = -1; // [s] Kinetic: before `start`, "lag time..." from here, "delay..." before
};

// A timed function's part in the frame steps. The counters belong to the function's run state;
// the link raises `ticks` and reads `taken`, the function's show_data advances `taken`.
struct timed_schedule {
    std::int32_t* ticks = nullptr;       // frames since the Zero or the Read
    const std::int16_t* taken = nullptr; // samples taken so far: the index of the next
    std::function<bool()> reading;       // clear during the function's Zero step
    std::function<timed_plan()> plan;
    std::function<void(std::int32_t value)> show_zero; // the first frame after Zero
    std::function<void(std::int32_t value)> show_data; // a due sample: the frame's own value
    std::function<void()> stop_now;                    // the end test passed
};

// The timed steps of one intensity frame in measure_mode `mode` (3, 4 or 8). Nothing when no
// function serves the mode.
void timed_steps(int mode, std::int32_t value);

// When sample `taken` falls due [s], and whether it is due at frame count `ticks`.
double due_time(const timed_plan& plan, int taken);
bool sample_due(const timed_plan& plan, std::int32_t ticks, int taken);

} // namespace lumora
